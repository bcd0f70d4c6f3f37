#pragma once

#include <QGuiApplication>
#include <QMouseEvent>
#include <QStyleHints>

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
        if (!m_start || !(event.buttons() & Qt::LeftButton))
            return false;
        const auto way = event.globalPosition() - *m_start;
        if (way.manhattanLength() < QGuiApplication::styleHints()->startDragDistance())
            return false;
        m_start.reset();
        return true;
    }

private:
    std::optional<QPointF> m_start;
};

} // namespace quillnest
