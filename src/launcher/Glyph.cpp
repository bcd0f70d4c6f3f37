#include "launcher/Glyph.h"

#include <QPainterPath>

namespace quillnest
{

void drawGlyph(QPainter &painter, QRectF area, const QColor &color)
{
    // Drawn on a field of 18 by 18.
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(area.topLeft());
    painter.scale(area.width() / 18, area.height() / 18);
    painter.setPen(QPen(color, 1.6, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    for (const double inset : {0.0, 2.6, 5.2}) {
        QPainterPath arc;
        arc.arcMoveTo(QRectF(1.5 + inset, 9 - 6.5 + inset, 15 - 2 * inset, 13 - 2 * inset), 180);
        arc.arcTo(QRectF(1.5 + inset, 9 - 6.5 + inset, 15 - 2 * inset, 13 - 2 * inset), 180, 180);
        painter.drawPath(arc);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(QRectF(6.4, 1.4, 5.2, 6.6));
    painter.restore();
}

QImage glyphImage(int points)
{
    QImage image(points, points, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawGlyph(painter, QRectF(0, 0, points, points), Qt::black);
    return image;
}

QIcon glyphIcon(const QColor &color)
{
    QIcon icon;
    for (const int size : {18, 22, 24, 36, 48, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        drawGlyph(painter, QRectF(0, 0, size, size), color);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace quillnest
