#pragma once

#include <QImage>
#include <QMargins>
#include <QPainter>
#include <QRectF>

namespace quillnest
{

/// The soft shadow around a rounded window, for desktops that blend windows but leave their shadows to the programs.
class PanelShadow
{
public:
    /// How far the shadow reaches beyond the window's frame, in points. It lies a little lower than the window.
    static constexpr QMargins reach{18, 14, 18, 24};

    /// Replaces what is around and below a frame by its shadow, as far as the painter's clip allows.
    void paint(QPainter &painter, QRect frame) const;

private:
    /// The shadow of a frame that is no larger than its four corners, at a number of pixels per point.
    static QImage corners(double scale);

    mutable QImage m_corners;
};

} // namespace quillnest
