#include "IconArtist.h"

#include <QPainter>
#include <QPainterPath>

namespace samples
{

namespace
{

/// The rounded plate that an icon stands on, a little smaller than its square as launchers expect.
QPainterPath plate()
{
    QPainterPath path;
    path.addRoundedRect(QRectF(8, 8, 176, 176), 44, 44);
    return path;
}

void fillPlate(QPainter &painter, const QColor &top, const QColor &bottom)
{
    QLinearGradient fill(0, 8, 0, 184);
    fill.setColorAt(0, top);
    fill.setColorAt(1, bottom);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawPath(plate());
    painter.setClipPath(plate());
}

QPainterPath wave(qreal top, qreal height, qreal shift)
{
    QPainterPath path(QPointF(-96 + shift, top));
    for (int i = 0; i < 4; ++i) {
        const qreal left = -96 + shift + i * 96;
        path.cubicTo(left + 32, top - height, left + 64, top + height, left + 96, top);
    }
    path.lineTo(400, 200);
    path.lineTo(-100, 200);
    path.closeSubpath();
    return path;
}

/// Three waves under a low sun.
void paintTide(QPainter &painter)
{
    fillPlate(painter, QColor(0xff, 0xd9, 0xa0), QColor(0xff, 0x9e, 0x7a));
    QRadialGradient glow(QPointF(96, 82), 70);
    glow.setColorAt(0, QColor(255, 255, 255, 130));
    glow.setColorAt(1, QColor(255, 255, 255, 0));
    painter.setBrush(glow);
    painter.drawEllipse(QPointF(96, 82), 70, 70);
    painter.setBrush(QColor(0xff, 0xf6, 0xe3));
    painter.drawEllipse(QPointF(96, 82), 34, 34);
    painter.setBrush(QColor(0x38, 0xa8, 0xb5));
    painter.drawPath(wave(98, 22, 0));
    painter.setBrush(QColor(0x1f, 0x7f, 0x9c));
    painter.drawPath(wave(124, 22, 40));
    painter.setBrush(QColor(0x14, 0x55, 0x78));
    painter.drawPath(wave(150, 20, -16));
}

/// A paper lantern against the night.
void paintLantern(QPainter &painter)
{
    fillPlate(painter, QColor(0x24, 0x2b, 0x57), QColor(0x4b, 0x35, 0x78));
    painter.setBrush(QColor(255, 255, 255, 170));
    for (const QPointF star : {QPointF(40, 46), QPointF(150, 40), QPointF(158, 112), QPointF(32, 122), QPointF(62, 28)})
        painter.drawEllipse(star, 2.6, 2.6);
    QRadialGradient glow(QPointF(96, 102), 84);
    glow.setColorAt(0, QColor(255, 190, 90, 170));
    glow.setColorAt(1, QColor(255, 190, 90, 0));
    painter.setBrush(glow);
    painter.drawEllipse(QPointF(96, 102), 84, 84);
    painter.setPen(QPen(QColor(0xf4, 0xe3, 0xc4), 4, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(96, 8), QPointF(96, 52));
    painter.setPen(Qt::NoPen);
    QRadialGradient paper(QPointF(96, 104), 56);
    paper.setColorAt(0, QColor(0xff, 0xf1, 0xb8));
    paper.setColorAt(1, QColor(0xf2, 0x6d, 0x3d));
    painter.setBrush(paper);
    painter.drawEllipse(QPointF(96, 102), 46, 46);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(160, 52, 30, 120), 3));
    painter.drawEllipse(QPointF(96, 102), 16, 46);
    painter.drawEllipse(QPointF(96, 102), 33, 46);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x7a, 0x2a, 0x22));
    painter.drawRoundedRect(QRectF(76, 50, 40, 11), 4, 4);
    painter.drawRoundedRect(QRectF(76, 143, 40, 11), 4, 4);
    painter.drawRoundedRect(QRectF(93, 152, 6, 18), 3, 3);
}

} // namespace

bool paintIcon(const QString &name, QPainter &painter)
{
    if (name == QLatin1StringView("tide"))
        paintTide(painter);
    else if (name == QLatin1StringView("lantern"))
        paintLantern(painter);
    else
        return false;
    return true;
}

} // namespace samples
