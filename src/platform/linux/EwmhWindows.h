#pragma once

#include "platform/ForeignWindows.h"

#include <QByteArray>

#include <memory>
#include <optional>

struct xcb_connection_t;

namespace quillnest
{

/// Other programs' windows under an X window manager that follows the Extended Window Manager Hints 1.5. A program is
/// known by its window class, its instance name, the last word of a dotted identity, or the name of its executable,
/// whatever their case.
class EwmhWindows : public ForeignWindows
{
public:
    /// `display` as for an X client, null for the environment's; `scale` is the number of pixels in a point.
    explicit EwmhWindows(const char *display = nullptr, double scale = 1);
    ~EwmhWindows() override;

    bool isTrusted() const override;
    /// A desktop without such a window manager has nobody to ask.
    void askForTrust() override { }
    bool isRunning(const QString &bundleIdentifier) const override;
    std::vector<WindowId> windows(const QString &bundleIdentifier) const override;
    bool setSize(WindowId window, QSize size) override;
    bool setPosition(WindowId window, QPoint position) override;
    void activate(WindowId window) override;

private:
    struct Disconnect {
        void operator()(xcb_connection_t *connection) const;
    };

    std::uint32_t atom(const char *name) const;
    QByteArray property(WindowId window, const char *name) const;
    std::vector<std::uint32_t> numbers(WindowId window, const char *name) const;
    bool allows(WindowId window, const char *action) const;
    bool tellWindowManager(WindowId window, const char *message, std::vector<std::uint32_t> data);
    bool moveResize(WindowId window, std::uint32_t flags, QPoint position, QSize size);
    void unmaximize(WindowId window);

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    WindowId m_root = 0;
    double m_scale = 1;
};

} // namespace quillnest
