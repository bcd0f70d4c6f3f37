#pragma once

#include <QString>

namespace standin
{

class Device;

/// A key pressed and released on a display, by Android's key code.
void pressKey(Device &device, int displayId, int keyCode);

/// A number, or a name such as "KEYCODE_BACK"; 0 for anything else.
int keyCodeOf(const QString &name);

} // namespace standin
