#include "launcher/Glyph.h"

#include <QPainterPath>

namespace quillnest
{

void drawGlyph(QPainter &painter, QRectF area, const QColor &color)
{
    // The strokes are laid out on a field of 1024 units; their middle comes to the area's.
    const double scale = area.width() * 0.86 / 471;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(area.center() - scale * QPointF(511.5, 504.5));
    painter.scale(scale, scale);
    painter.setBrush(Qt::NoBrush);

    QPainterPath cup(QPointF(309.5, 570));
    cup.lineTo(309.5, 309.5);
    cup.lineTo(713.5, 309.5);
    cup.lineTo(713.5, 570);
    cup.cubicTo(713.5, 642, 622, 699.5, 511.5, 699.5);
    cup.cubicTo(401, 699.5, 309.5, 642, 309.5, 570);
    cup.closeSubpath();
    // With bevels the toolkit would cut corners that are meant to be sharp.
    QPen pen(color, 67, Qt::SolidLine, Qt::FlatCap, Qt::SvgMiterJoin);
    pen.setMiterLimit(10);
    painter.setPen(pen);
    painter.drawPath(cup);

    QPainterPath chevron(QPointF(397, 483));
    chevron.lineTo(512, 569);
    chevron.lineTo(627, 483);
    pen.setWidthF(62);
    pen.setCapStyle(Qt::RoundCap);
    painter.setPen(pen);
    painter.drawPath(chevron);
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
