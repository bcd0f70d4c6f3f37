#include "platform/linux/X11Screens.h"

#include <QGuiApplication>

#include <xcb/shape.h>
#include <xcb/xcb.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace quillnest
{

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

bool X11Screens::isComposited() const
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

void X11Screens::declareShadow(quintptr window, QSize size, QMargins shadow, int reach, double scale)
{
    auto *connection = x11Connection();
    if (!connection)
        return;
    const auto id = static_cast<xcb_window_t>(window);
    const auto pixels = [scale](int points) { return static_cast<int>(std::lround(points * scale)); };
    constexpr std::string_view property = "_GTK_FRAME_EXTENTS";
    const Owned<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, property.size(), property.data()), nullptr));
    if (atom) {
        const std::array<std::uint32_t, 4> extents{
            static_cast<std::uint32_t>(pixels(shadow.left())), static_cast<std::uint32_t>(pixels(shadow.right())),
            static_cast<std::uint32_t>(pixels(shadow.top())), static_cast<std::uint32_t>(pixels(shadow.bottom()))};
        xcb_change_property(
            connection, XCB_PROP_MODE_REPLACE, id, atom->atom, XCB_ATOM_CARDINAL, 32, extents.size(), extents.data());
    }
    const auto area = QRect(QPoint(0, 0), size).marginsRemoved(shadow).adjusted(-reach, -reach, reach, reach);
    const xcb_rectangle_t taking{
        static_cast<std::int16_t>(pixels(area.x())), static_cast<std::int16_t>(pixels(area.y())),
        static_cast<std::uint16_t>(pixels(area.width())), static_cast<std::uint16_t>(pixels(area.height()))};
    xcb_shape_rectangles(
        connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, id, 0, 0, 1, &taking);
    xcb_flush(connection);
}

bool X11Screens::keepsKeyboard(quintptr window) const
{
    auto *connection = x11Connection();
    if (!connection)
        return false;
    // A grab takes the keys and leaves the input focus where it is.
    const Owned<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    return focus && focus->focus == window;
}

bool X11Screens::isMouseButtonDown() const
{
    auto *connection = x11Connection();
    if (!connection)
        return false;
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const Owned<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, root), nullptr));
    constexpr int anyButton = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;
    return pointer && (pointer->mask & anyButton);
}

} // namespace quillnest
