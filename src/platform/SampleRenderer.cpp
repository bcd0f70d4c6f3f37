#include "platform/SampleRenderer.h"

namespace quillnest
{

QImage VideoFrame::toImage() const
{
    QImage image(size(), QImage::Format_RGB32);
    convertTo(image.bits(), image.bytesPerLine(), image.rect());
    return image;
}

} // namespace quillnest
