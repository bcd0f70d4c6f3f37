#pragma once

#include "platform/StatusItems.h"

namespace quillnest
{

/// Status items in the system tray: StatusNotifierItem where the desktop has it, the older tray otherwise.
class TrayStatusItems : public StatusItems
{
public:
    bool isAvailable() const override;
    std::unique_ptr<StatusItem>
    add(const QIcon &icon, const QString &title, std::function<void()> onClick, std::vector<MenuEntry> menu) override;
};

} // namespace quillnest
