#pragma once

#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

#include <optional>

namespace quillnest
{

/// Tells when a press on a window's ground becomes a drag. The window manager takes the pointer for a drag and gives it
/// back at the release; one that is over before it has begun would leave the window stuck to the pointer.
class WindowDrag
{
public:
    void pressed(const QMouseEvent &event)
    {
        m_start = event.button() == Qt::LeftButton ? std::optional(event.globalPosition()) : std::nullopt;
    }

    /// True once: now the window is to be moved.
    bool begins(const QMouseEvent &event)
    {
        // The window stays behind by that much, so it is hardly more than the trembling of a hand.
        constexpr double smallest = 3;
        if (!m_start || !(event.buttons() & Qt::LeftButton))
            return false;
        const auto way = event.globalPosition() - *m_start;
        if (way.manhattanLength() < smallest)
            return false;
        m_start.reset();
        return true;
    }

    /// Lets the window manager move the window once the drag begins.
    void move(QWidget &window, const QMouseEvent &event)
    {
        if (begins(event) && window.windowHandle())
            window.windowHandle()->startSystemMove();
    }

private:
    std::optional<QPointF> m_start;
};

} // namespace quillnest
