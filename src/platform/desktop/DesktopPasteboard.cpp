#include "platform/desktop/DesktopPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace quillnest
{

DesktopPasteboard::DesktopPasteboard()
{
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, [this] { ++m_changes; });
}

std::optional<QString> DesktopPasteboard::string() const
{
    const auto *data = QGuiApplication::clipboard()->mimeData();
    if (!data || !data->hasText())
        return std::nullopt;
    return data->text();
}

bool DesktopPasteboard::isSecret() const
{
    // The mark that password managers and the clipboard histories of desktops have agreed on.
    const auto *data = QGuiApplication::clipboard()->mimeData();
    return data && data->data(QStringLiteral("x-kde-passwordManagerHint")) == "secret";
}

void DesktopPasteboard::setString(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

} // namespace quillnest
