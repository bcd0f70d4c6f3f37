#pragma once

#include <QGuiApplication>
#include <QMouseEvent>
#include <QStyleHints>
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

    /// Once: how far the pointer has come when the window is to be moved with it.
    std::optional<QPoint> begins(const QMouseEvent &event)
    {
        if (!m_start || !(event.buttons() & Qt::LeftButton))
            return std::nullopt;
        const auto way = event.globalPosition() - *m_start;
        if (way.manhattanLength() < QGuiApplication::styleHints()->startDragDistance())
            return std::nullopt;
        m_start.reset();
        return way.toPoint();
    }

    /// Lets the window manager move the window once the drag begins.
    void move(QWidget &window, const QMouseEvent &event)
    {
        const auto way = begins(event);
        if (!way || !window.windowHandle())
            return;
        // What lies behind the pointer by then is made up for, so that the place that was pressed stays under it.
        window.move(window.pos() + *way);
        window.windowHandle()->startSystemMove();
    }

private:
    std::optional<QPointF> m_start;
};

} // namespace quillnest
