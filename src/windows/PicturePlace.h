#pragma once

#include <QPointF>
#include <QRect>
#include <QSizeF>

namespace quillnest
{

/// Where a stream's picture lies in the view that shows it. The one place that says so: what is painted and what is
/// touched go by the same rectangle. Pure functions; any thread.
namespace PicturePlace
{
/// Whether a picture fits into a view unscaled, both in pixels, but for the few pixels that the display's size was
/// rounded by.
bool fits(QSizeF view, QSize picture);

/// Where a picture is drawn in a view, both in pixels: letterboxed, and unscaled when it fits but for that rounding,
/// since scaling by a hair would blur every line.
QRect rect(QSizeF view, QSize picture);

/// Which pixel of a picture is drawn at a point of the view; beside the picture the nearest one. Point and view are in
/// points of `scale` pixels. Neither size is empty.
QPointF pixelAt(QPointF point, QSizeF view, double scale, QSize picture);
} // namespace PicturePlace

} // namespace quillnest
