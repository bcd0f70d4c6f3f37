#pragma once

#include "platform/desktop/DesktopScreens.h"

namespace quillnest
{

/// What the X server and the desktop's window manager know. Where there is no X server, nothing is special.
class X11Screens : public DesktopScreens
{
public:
    bool isComposited() const override;
    void declareShadow(quintptr window, QSize size, QMargins shadow, int reach, double scale) override;
    bool keepsKeyboard(quintptr window) const override;
    bool isMouseButtonDown() const override;
};

} // namespace quillnest
