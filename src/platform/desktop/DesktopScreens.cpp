#include "platform/desktop/DesktopScreens.h"

#include <QGuiApplication>
#include <QScreen>

namespace quillnest
{

std::vector<ScreenInfo> DesktopScreens::all() const
{
    std::vector<ScreenInfo> result;
    // QGuiApplication keeps the primary screen first.
    for (const auto *screen : QGuiApplication::screens())
        result.push_back({screen->geometry(), screen->availableGeometry(), screen->devicePixelRatio()});
    return result;
}

} // namespace quillnest
