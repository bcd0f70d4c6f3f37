#include "device/KeyInput.h"

#include "device/Device.h"

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

// The key codes of android.view.KeyEvent that an app's text field or the system answers to.
enum KeyCode { Home = 3, Back = 4, Zero = 7, Nine = 16, A = 29, Z = 54, Tab = 61, Space = 62, Enter = 66, Delete = 67 };

} // namespace

void pressKey(Device &device, int displayId, int keyCode)
{
    const auto display = device.displays.find(displayId);
    if (!display)
        return;
    if (device.notifications.mediaKey(device.displays.top(displayId).value_or(Task()).package, keyCode))
        return;
    if (keyCode == Home)
        device.displays.home(displayId);
    else if (keyCode == Back)
        device.displays.back(displayId);
    else if (keyCode == Enter)
        display->insertText(u"\n"_s);
    else if (keyCode == Delete)
        display->deleteBackwards();
    else if (keyCode == Space)
        display->insertText(u" "_s);
    else if (keyCode == Tab)
        display->insertText(u"\t"_s);
    else if (keyCode >= Zero && keyCode <= Nine)
        display->insertText(QChar(u'0' + keyCode - Zero));
    else if (keyCode >= A && keyCode <= Z)
        display->insertText(QChar(u'a' + keyCode - A));
}

int keyCodeOf(const QString &name)
{
    bool isNumber = false;
    const int number = name.toInt(&isNumber);
    if (isNumber)
        return number;
    static const QMap<QString, int> names
        = {{u"HOME"_s, Home}, {u"BACK"_s, Back}, {u"ENTER"_s, Enter}, {u"DEL"_s, Delete}, {u"SPACE"_s, Space}};
    return names.value(name.startsWith(u"KEYCODE_"_s) ? name.mid(8) : name);
}

} // namespace standin
