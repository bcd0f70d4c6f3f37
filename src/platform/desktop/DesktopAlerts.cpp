#include "platform/desktop/DesktopAlerts.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QPushButton>

namespace quillnest
{

void DesktopAlerts::ask(const Alert &alert, std::function<void(int)> answer)
{
    auto *box = new QMessageBox;
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(QStringLiteral("Quillnest"));
    box->setIcon(alert.style == Alert::Style::Warning ? QMessageBox::Warning : QMessageBox::Information);
    // An app's name is no markup.
    box->setTextFormat(Qt::PlainText);
    box->setText(alert.message);
    box->setInformativeText(alert.informativeText);
    QList<QAbstractButton *> buttons;
    for (const auto &title : alert.buttons) {
        const bool isFirst = buttons.isEmpty();
        buttons.append(box->addButton(title, isFirst ? QMessageBox::AcceptRole : QMessageBox::RejectRole));
    }
    box->setDefaultButton(qobject_cast<QPushButton *>(buttons.first()));
    box->setEscapeButton(buttons.last());
    QObject::connect(box, &QMessageBox::finished, box, [box, buttons, answer = std::move(answer)] {
        const auto chosen = buttons.indexOf(box->clickedButton());
        answer(static_cast<int>(chosen < 0 ? buttons.size() - 1 : chosen));
    });
    box->setWindowModality(Qt::ApplicationModal);
    box->show();
    box->raise();
    box->activateWindow();
}

} // namespace quillnest
