#pragma once

#include "windows/LoopbackDevice.h"

#include <QTest>
#include <QWidget>

namespace quillnest
{

/// Shows a window, gives it the keyboard and waits until it has it for good. The window manager gives the keyboard
/// twice, once for the new window and once because it is asked to, and the second time may come late.
inline bool giveKeyboard(const FakePlatform &fakes, QWidget &window)
{
    window.show();
    window.activateWindow();
    if (!comesTrue(fakes, [&window] { return window.isActiveWindow(); }))
        return false;
    // The window manager does things in their order: once it has shown this, it has done all that came before.
    QWidget last(nullptr, Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus);
    last.setAttribute(Qt::WA_ShowWithoutActivating);
    last.setGeometry(1500, 1100, 20, 20);
    last.show();
    return QTest::qWaitForWindowExposed(&last) && comesTrue(fakes, [&window] { return window.isActiveWindow(); });
}

} // namespace quillnest
