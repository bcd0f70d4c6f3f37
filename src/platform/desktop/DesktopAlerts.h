#pragma once

#include "platform/Alerts.h"

namespace quillnest
{

/// Alerts as message boxes.
class DesktopAlerts : public Alerts
{
public:
    void ask(const Alert &alert, std::function<void(int button)> answer) override;
};

} // namespace quillnest
