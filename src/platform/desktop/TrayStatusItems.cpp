#include "platform/desktop/TrayStatusItems.h"

#include <QMenu>
#include <QSystemTrayIcon>

namespace quillnest
{

namespace
{

class TrayItem : public StatusItem
{
public:
    TrayItem(
        const QIcon &icon, const QString &title, std::function<void()> onClick,
        std::vector<StatusItems::MenuEntry> entries)
    {
        for (auto &entry : entries)
            QObject::connect(m_menu.addAction(entry.title), &QAction::triggered, &m_menu, std::move(entry.action));
        m_icon.setIcon(icon);
        m_icon.setToolTip(title);
        m_icon.setContextMenu(&m_menu);
        QObject::connect(
            &m_icon, &QSystemTrayIcon::activated, &m_menu,
            [onClick = std::move(onClick)](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger)
                    onClick();
            });
        m_icon.show();
    }

private:
    QMenu m_menu;
    QSystemTrayIcon m_icon;
};

} // namespace

bool TrayStatusItems::isAvailable() const
{
    return QSystemTrayIcon::isSystemTrayAvailable();
}

std::unique_ptr<StatusItem> TrayStatusItems::add(
    const QIcon &icon, const QString &title, std::function<void()> onClick, std::vector<MenuEntry> menu)
{
    return std::make_unique<TrayItem>(icon, title, std::move(onClick), std::move(menu));
}

} // namespace quillnest
