#include "platform/desktop/DesktopScreens.h"

#include <QGuiApplication>
#include <QScreen>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

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

bool DesktopScreens::isComposited() const
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11)
        return true;
    // The selection that a compositing manager of the first X screen owns.
    constexpr std::string_view selection = "_NET_WM_CM_S0";
    auto *connection = x11->connection();
    const auto free = [](void *reply) { std::free(reply); };
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(free)> atom(
        xcb_intern_atom_reply(
            connection, xcb_intern_atom(connection, 1, selection.size(), selection.data()), nullptr),
        free);
    if (!atom || atom->atom == XCB_ATOM_NONE)
        return false;
    const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(free)> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr), free);
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace quillnest
