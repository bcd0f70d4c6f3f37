#pragma once

#include "platform/Screens.h"

namespace quillnest
{

/// The screens, which are the same question on every host. What goes beyond them is as on a desktop that composes its
/// windows, places them without asking for their shadows and takes the keyboard from nobody for a moment.
class DesktopScreens : public Screens
{
public:
    std::vector<ScreenInfo> all() const override;
    bool isComposited() const override { return true; }
    void declareShadow(quintptr, QSize, QMargins, int, double) override { }
    bool keepsKeyboard(quintptr) const override { return false; }
};

} // namespace quillnest
