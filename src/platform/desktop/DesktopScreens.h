#pragma once

#include "platform/Screens.h"

namespace quillnest
{

class DesktopScreens : public Screens
{
public:
    std::vector<ScreenInfo> all() const override;
    bool isComposited() const override;
    void declareShadow(quintptr window, QSize size, QMargins shadow, int reach, double scale) override;
    bool keepsKeyboard(quintptr window) const override;
};

} // namespace quillnest
