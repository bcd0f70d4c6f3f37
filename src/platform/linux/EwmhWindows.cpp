#include "platform/linux/EwmhWindows.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <xcb/xcb.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace quillnest
{

namespace
{

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};
template <typename Reply> using Owned = std::unique_ptr<Reply, Free>;

// The fields of a move and resize request that are meant, and the corner that a place is counted from.
constexpr std::uint32_t northWestGravity = 1;
constexpr std::uint32_t hasPosition = (1U << 8) | (1U << 9);
constexpr std::uint32_t hasSize = (1U << 10) | (1U << 11);
/// Who asks: a tool that acts for the user.
constexpr std::uint32_t fromPager = 2;

bool isSameName(const QString &name, const QString &identity)
{
    return !name.isEmpty()
        && (name.compare(identity, Qt::CaseInsensitive) == 0
            || name.compare(identity.section(QLatin1Char('.'), -1), Qt::CaseInsensitive) == 0);
}

} // namespace

void EwmhWindows::Disconnect::operator()(xcb_connection_t *connection) const
{
    xcb_disconnect(connection);
}

EwmhWindows::EwmhWindows(const char *display, double scale)
    : m_connection(xcb_connect(display, nullptr)), m_scale(scale)
{
    if (xcb_connection_has_error(m_connection.get()) != 0) {
        m_connection.reset();
        return;
    }
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root;
}

EwmhWindows::~EwmhWindows() = default;

std::uint32_t EwmhWindows::atom(const char *name) const
{
    const auto length = static_cast<std::uint16_t>(std::strlen(name));
    const Owned<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(m_connection.get(), xcb_intern_atom(m_connection.get(), 0, length, name), nullptr));
    return reply ? reply->atom : static_cast<std::uint32_t>(XCB_ATOM_NONE);
}

QByteArray EwmhWindows::property(WindowId window, const char *name) const
{
    constexpr std::uint32_t longest = 1U << 16;
    const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection.get(),
        xcb_get_property(m_connection.get(), 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, longest), nullptr));
    if (!reply)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(reply.get())), xcb_get_property_value_length(reply.get())};
}

std::vector<std::uint32_t> EwmhWindows::numbers(WindowId window, const char *name) const
{
    const auto bytes = property(window, name);
    std::vector<std::uint32_t> result(static_cast<std::size_t>(bytes.size()) / sizeof(std::uint32_t));
    if (!result.empty())
        std::memcpy(result.data(), bytes.constData(), result.size() * sizeof(std::uint32_t));
    return result;
}

bool EwmhWindows::isTrusted() const
{
    if (!m_connection)
        return false;
    // The hint outlives a window manager that crashed, so the window that it names has to be there and to say the same.
    const auto check = numbers(m_root, "_NET_SUPPORTING_WM_CHECK");
    if (check.empty() || numbers(check.front(), "_NET_SUPPORTING_WM_CHECK") != check)
        return false;
    const auto supported = numbers(m_root, "_NET_SUPPORTED");
    return std::find(supported.begin(), supported.end(), atom("_NET_MOVERESIZE_WINDOW")) != supported.end();
}

std::vector<ForeignWindows::WindowId> EwmhWindows::windows(const QString &bundleIdentifier) const
{
    std::vector<WindowId> result;
    if (!m_connection)
        return result;
    for (const auto window : numbers(m_root, "_NET_CLIENT_LIST")) {
        // The instance's name, a zero byte, the class.
        const auto names = property(window, "WM_CLASS").split('\0');
        const bool matches = std::any_of(names.begin(), names.end(), [&bundleIdentifier](const QByteArray &name) {
            return isSameName(QString::fromLocal8Bit(name), bundleIdentifier);
        });
        const auto process = numbers(window, "_NET_WM_PID");
        const auto executable = [&process] {
            return process.empty()
                ? QString()
                : QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(process[0]))).fileName();
        };
        if (matches || isSameName(executable(), bundleIdentifier))
            result.push_back(window);
    }
    return result;
}

bool EwmhWindows::isRunning(const QString &bundleIdentifier) const
{
    if (!windows(bundleIdentifier).empty())
        return true;
    const auto processes = QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs);
    return std::any_of(processes.begin(), processes.end(), [&bundleIdentifier](const QString &process) {
        const auto executable = QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(process));
        return isSameName(QFileInfo(executable).fileName(), bundleIdentifier);
    });
}

bool EwmhWindows::allows(WindowId window, const char *action) const
{
    const auto actions = numbers(window, "_NET_WM_ALLOWED_ACTIONS");
    return std::find(actions.begin(), actions.end(), atom(action)) != actions.end();
}

bool EwmhWindows::tellWindowManager(WindowId window, const char *message, std::vector<std::uint32_t> data)
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(message);
    std::copy(data.begin(), data.end(), event.data.data32);
    const auto cookie = xcb_send_event_checked(
        m_connection.get(), 0, m_root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
        reinterpret_cast<const char *>(&event));
    const Owned<xcb_generic_error_t> error(xcb_request_check(m_connection.get(), cookie));
    return error == nullptr;
}

bool EwmhWindows::moveResize(WindowId window, std::uint32_t flags, QPoint position, QSize size)
{
    return tellWindowManager(
        window, "_NET_MOVERESIZE_WINDOW",
        {northWestGravity | flags | (fromPager << 12), static_cast<std::uint32_t>(position.x()),
         static_cast<std::uint32_t>(position.y()), static_cast<std::uint32_t>(size.width()),
         static_cast<std::uint32_t>(size.height())});
}

void EwmhWindows::unmaximize(WindowId window)
{
    const auto tall = atom("_NET_WM_STATE_MAXIMIZED_VERT");
    const auto wide = atom("_NET_WM_STATE_MAXIMIZED_HORZ");
    const auto isMaximized = [&] {
        const auto states = numbers(window, "_NET_WM_STATE");
        return std::any_of(
            states.begin(), states.end(), [&](std::uint32_t state) { return state == tall || state == wide; });
    };
    if (!isMaximized())
        return;
    constexpr std::uint32_t remove = 0;
    tellWindowManager(window, "_NET_WM_STATE", {remove, tall, wide, fromPager});
    // A maximised window takes no other size and has another frame, so what follows has to wait for the window manager.
    constexpr int rounds = 200;
    for (int round = 0; round < rounds && isMaximized(); ++round)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

bool EwmhWindows::setSize(WindowId window, QSize size)
{
    if (!m_connection || !allows(window, "_NET_WM_ACTION_RESIZE"))
        return false;
    unmaximize(window);
    // The request counts the client's area; the frame stands around it: left, right, top, bottom.
    auto frame = numbers(window, "_NET_FRAME_EXTENTS");
    frame.resize(4);
    const QSize pixels(
        static_cast<int>(std::lround(size.width() * m_scale)), static_cast<int>(std::lround(size.height() * m_scale)));
    const QSize borders(static_cast<int>(frame[0] + frame[1]), static_cast<int>(frame[2] + frame[3]));
    return moveResize(window, hasSize, {}, (pixels - borders).expandedTo({1, 1}));
}

bool EwmhWindows::setPosition(WindowId window, QPoint position)
{
    if (!m_connection || !allows(window, "_NET_WM_ACTION_MOVE"))
        return false;
    const QPoint pixels(
        static_cast<int>(std::lround(position.x() * m_scale)), static_cast<int>(std::lround(position.y() * m_scale)));
    return moveResize(window, hasPosition, pixels, {});
}

void EwmhWindows::activate(WindowId window)
{
    if (m_connection)
        tellWindowManager(window, "_NET_ACTIVE_WINDOW", {fromPager, XCB_CURRENT_TIME, 0});
}

} // namespace quillnest
