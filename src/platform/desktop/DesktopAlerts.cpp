#include "platform/desktop/DesktopAlerts.h"

#include <QAbstractButton>
#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

namespace quillnest
{

namespace
{

constexpr int iconSize = 48;
constexpr int textWidth = 260;

/// The toolkit's own layout is cramped: wider margins, the program's sign, the question in bold.
void giveRoom(QMessageBox &box)
{
    const auto sign = QApplication::windowIcon().pixmap(QSize(iconSize, iconSize), box.devicePixelRatioF());
    if (!sign.isNull())
        box.setIconPixmap(sign);
    auto *grid = qobject_cast<QGridLayout *>(box.layout());
    grid->setContentsMargins(20, 20, 20, 18);
    grid->setHorizontalSpacing(16);
    grid->setVerticalSpacing(14);
    if (auto *question = box.findChild<QLabel *>(QStringLiteral("qt_msgbox_label"))) {
        auto font = question->font();
        font.setBold(true);
        question->setFont(font);
        question->setMinimumWidth(textWidth);
    }
}

} // namespace

void DesktopAlerts::ask(const Alert &alert, std::function<void(int)> answer)
{
    auto *box = new QMessageBox;
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(QStringLiteral("Quillnest"));
    box->setIcon(alert.style == Alert::Style::warning ? QMessageBox::Warning : QMessageBox::Information);
    // An app's name is no markup.
    box->setTextFormat(Qt::PlainText);
    box->setText(alert.message);
    box->setInformativeText(alert.informativeText);
    giveRoom(*box);
    QList<QAbstractButton *> buttons;
    for (const auto &title : alert.buttons) {
        const bool isFirst = buttons.isEmpty();
        buttons.append(box->addButton(title, isFirst ? QMessageBox::AcceptRole : QMessageBox::RejectRole));
    }
    // What is warned of doesn't happen by a Return that was meant for something else.
    const bool isWarning = alert.style == Alert::Style::warning;
    box->setDefaultButton(qobject_cast<QPushButton *>(isWarning ? buttons.last() : buttons.first()));
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
