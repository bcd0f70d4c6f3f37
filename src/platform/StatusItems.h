#pragma once

#include <QIcon>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace quillnest
{

/// One icon among the desktop's status icons. Dropping it removes the icon.
class StatusItem
{
public:
    virtual ~StatusItem() = default;
};

class StatusItems
{
public:
    struct MenuEntry {
        QString title;
        std::function<void()> action;
    };

    virtual ~StatusItems() = default;

    /// Whether the desktop has a place for them at all.
    virtual bool isAvailable() const = 0;

    /// Shows an icon; `onClick` answers a click, the menu a click with the other button. Main thread.
    virtual std::unique_ptr<StatusItem>
    add(const QIcon &icon, const QString &title, std::function<void()> onClick, std::vector<MenuEntry> menu) = 0;
};

} // namespace quillnest
