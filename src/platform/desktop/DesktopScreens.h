#pragma once

#include "platform/Screens.h"

namespace quillnest
{

class DesktopScreens : public Screens
{
public:
    std::vector<ScreenInfo> all() const override;
    bool isComposited() const override;
    bool keepsKeyboard(quintptr window) const override;
};

} // namespace quillnest
