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

void DesktopPasteboard::setString(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

} // namespace quillnest
