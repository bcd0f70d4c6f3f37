#pragma once

#include "launcher/Theme.h"

#include <QImage>
#include <QPainter>
#include <QRectF>

#include <array>

namespace quillnest
{

/// An app's icon in the shape of the style or, as long as there is none, a monogram that stays with its name.
namespace AppIcon
{
struct Gradient {
    QColor first;
    QColor second;
};
/// The colours of the monograms.
const std::array<Gradient, 7> &palettes();
std::size_t paletteIndex(const QString &name);

/// The first letters of the first two words, or "?".
QString monogram(const QString &name);

/// Of the corners of an icon `size` points wide.
double radius(double size, ThemeStyle style);

/// Paints the icon into a square, crisp at the painter's scale; its soft shadow falls a little beyond that. What has
/// been worked out for a picture is kept for the next time.
void paint(QPainter &painter, const QRectF &square, const QString &name, const QImage &image, ThemeStyle style);
} // namespace AppIcon

} // namespace quillnest
