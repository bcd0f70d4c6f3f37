#pragma once

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QPainter>
#include <QRectF>

namespace quillnest
{

/// The program's sign, a cup with a chevron in it, in the middle of an area whose width alone gives its size.
void drawGlyph(QPainter &painter, QRectF area, const QColor &color);

/// The sign in black on nothing, `points` wide and high.
QImage glyphImage(int points);

/// A blue that stands out from light and from dark bars alike: whatever the windows look like, the desktop's bar may be
/// of either kind.
constexpr QColor glyphBlue(0x4C, 0x6F, 0xFF);

/// The sign as an icon in one colour.
QIcon glyphIcon(const QColor &color);

} // namespace quillnest
