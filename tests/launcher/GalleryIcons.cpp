#include "GalleryIcons.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace quillnest
{

namespace
{

constexpr int side = 192;

void drawWaves(QPainter &painter)
{
    for (int i = 0; i < 3; ++i) {
        QPainterPath wave(QPointF(0, 92 + 30 * i));
        for (int x = 0; x <= side; x += 4)
            wave.lineTo(x, 92 + 30 * i + 10 * std::sin(x / 22.0 + i * 1.7));
        wave.lineTo(side, side);
        wave.lineTo(0, side);
        painter.fillPath(wave, QColor(255, 255, 255, 70 + 50 * i));
    }
}

void drawSun(QPainter &painter)
{
    painter.translate(side / 2.0, side / 2.0);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(), 34, 34);
    for (int i = 0; i < 8; ++i) {
        painter.drawRoundedRect(QRectF(-6, -72, 12, 24), 6, 6);
        painter.rotate(45);
    }
}

void drawPage(QPainter &painter)
{
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(54, 42, 84, 108), 10, 10);
    painter.setBrush(QColor(0, 0, 0, 50));
    for (int i = 0; i < 4; ++i)
        painter.drawRoundedRect(QRectF(68, 62 + 20 * i, i == 3 ? 32 : 56, 8), 4, 4);
}

void drawPlay(QPainter &painter)
{
    painter.setBrush(QColor(255, 255, 255, 60));
    painter.drawEllipse(QPointF(96, 96), 64, 64);
    QPainterPath triangle(QPointF(78, 62));
    triangle.lineTo(132, 96);
    triangle.lineTo(78, 130);
    triangle.closeSubpath();
    painter.fillPath(triangle, Qt::white);
}

void drawRings(QPainter &painter)
{
    painter.setBrush(Qt::NoBrush);
    for (int i = 0; i < 3; ++i) {
        painter.setPen(QPen(QColor(255, 255, 255, 255 - 70 * i), 12));
        painter.drawEllipse(QPointF(96, 96), 18 + 24 * i, 18 + 24 * i);
    }
}

void drawPeaks(QPainter &painter)
{
    QPainterPath back(QPointF(20, 150));
    back.lineTo(76, 66);
    back.lineTo(132, 150);
    painter.fillPath(back, QColor(255, 255, 255, 130));
    QPainterPath front(QPointF(68, 150));
    front.lineTo(124, 84);
    front.lineTo(176, 150);
    painter.fillPath(front, Qt::white);
    painter.setBrush(QColor(255, 230, 140));
    painter.drawEllipse(QPointF(138, 52), 16, 16);
}

} // namespace

QByteArray galleryIcon(const QString &name)
{
    const auto digest = QCryptographicHash::hash(name.toUtf8(), QCryptographicHash::Sha1);
    const auto hash
        = static_cast<unsigned>(static_cast<unsigned char>(digest[0])) * 256U + static_cast<unsigned char>(digest[1]);
    const int hue = static_cast<int>(hash % 360);
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient ground(0, 0, side, side);
    ground.setColorAt(0, QColor::fromHsv(hue, 165, 245));
    ground.setColorAt(1, QColor::fromHsv((hue + 24) % 360, 215, 190));
    painter.fillRect(image.rect(), ground);
    painter.setPen(Qt::NoPen);
    constexpr void (*drawings[])(QPainter &){drawWaves, drawSun, drawPage, drawPlay, drawRings, drawPeaks};
    drawings[static_cast<unsigned char>(digest[2]) % 6](painter);
    painter.end();
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

} // namespace quillnest
