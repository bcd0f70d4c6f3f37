#include "windows/WindowCorner.h"

#include "look/Palette.h"
#include "windows/AndroidAppPanel.h"

#include <QPainter>
#include <QPainterPath>

namespace quillnest
{

WindowCorner::WindowCorner(Side side, QWidget *parent) : QWidget(parent), m_side(side)
{
    setFixedSize(windowCornerRadius, windowCornerRadius);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
}

QImage WindowCorner::shadow() const
{
    const auto *panel = qobject_cast<const AndroidAppPanel *>(window());
    QImage image(size() * devicePixelRatioF(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatioF());
    image.fill(Qt::transparent);
    if (panel) {
        QPainter painter(&image);
        painter.translate(-mapTo(panel, QPoint(0, 0)));
        panel->paintOutside(painter);
    }
    return image;
}

void WindowCorner::paintEvent(QPaintEvent *)
{
    if (m_shadow.devicePixelRatio() != devicePixelRatioF() || m_shadow.isNull())
        m_shadow = shadow();
    // A rounded rectangle whose lower corner on this side is this one.
    constexpr double radius = windowCornerRadius;
    QPainterPath round;
    round.addRoundedRect(
        QRectF(m_side == Side::left ? 0 : -2 * radius, -2 * radius, 3 * radius, 3 * radius), radius, radius);
    QPainterPath square;
    square.addRect(rect());

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.fillPath(square.subtracted(round), Qt::black);
    // Behind the picture, of whose edge pixels a part is still there.
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
    painter.drawImage(QPoint(0, 0), m_shadow);
}

} // namespace quillnest
