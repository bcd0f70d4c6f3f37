#pragma once

#include <QImage>
#include <QPixmap>

namespace quillnest
{

/// What was grabbed, with one pixel for each point whatever the display's scale is, so that a test finds its places.
inline QImage inPoints(const QPixmap &grabbed)
{
    auto image = grabbed.toImage();
    const auto points = grabbed.deviceIndependentSize().toSize();
    image.setDevicePixelRatio(1);
    return image.size() == points ? image : image.scaled(points, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

} // namespace quillnest
