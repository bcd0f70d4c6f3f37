#include "platform/desktop/DesktopFilePanels.h"

#include <QFileDialog>

namespace quillnest
{

void DesktopFilePanels::open(const OpenPanel &panel, std::function<void(const QList<QUrl> &)> answer)
{
    auto *dialog = new QFileDialog;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(panel.title);
    dialog->setFileMode(panel.allowsSeveral ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
    QStringList patterns;
    for (const auto &extension : panel.extensions) {
        // Patterns tell upper case from lower, and users don't.
        patterns.append(QStringLiteral("*.%1").arg(extension));
        patterns.append(QStringLiteral("*.%1").arg(extension.toUpper()));
    }
    dialog->setNameFilter(QStringLiteral("%1 (%2)").arg(panel.kind, patterns.join(QLatin1Char(' '))));
    QObject::connect(dialog, &QFileDialog::finished, dialog, [dialog, answer = std::move(answer)](int result) {
        answer(result == QDialog::Accepted ? dialog->selectedUrls() : QList<QUrl>());
    });
    dialog->setWindowModality(Qt::ApplicationModal);
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

} // namespace quillnest
