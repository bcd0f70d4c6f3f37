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

namespace
{

xcb_connection_t *x11Connection()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};
template <typename Reply> using Owned = std::unique_ptr<Reply, Free>;

} // namespace

bool DesktopScreens::isComposited() const
{
    auto *connection = x11Connection();
    if (!connection)
        return true;
    // The selection that a compositing manager of the first X screen owns.
    constexpr std::string_view selection = "_NET_WM_CM_S0";
    const Owned<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 1, selection.size(), selection.data()), nullptr));
    if (!atom || atom->atom == XCB_ATOM_NONE)
        return false;
    const Owned<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

bool DesktopScreens::keepsKeyboard(quintptr window) const
{
    auto *connection = x11Connection();
    if (!connection)
        return false;
    // A grab takes the keys and leaves the input focus where it is.
    const Owned<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    return focus && focus->focus == window;
}

} // namespace quillnest
