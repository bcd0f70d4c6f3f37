#include "launcher/grid/AppIcon.h"

#include "look/ContinuousCorners.h"
#include "look/Fonts.h"
#include "look/Palette.h"

#include <QLinearGradient>
#include <QPixmapCache>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <cmath>
#include <vector>

namespace quillnest
{

namespace
{

constexpr float shadowOpacity = 0.15F;
/// In sizes of the icon.
constexpr double shadowRadius = 0.06;
constexpr double shadowOffset = 0.03;
/// Room for the shadow around a picture, in sizes of the icon.
constexpr double shadowRoom = 0.2;

QColor rgb(float red, float green, float blue)
{
    return QColor::fromRgbF(red, green, blue);
}

QString firstCharacter(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    const auto end = finder.toNextBoundary();
    return end > 0 ? text.left(end) : QString();
}

int characters(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    int count = 0;
    while (finder.toNextBoundary() > 0)
        ++count;
    return count;
}

/// One pass of a running mean over lines of `length` values, `stride` apart.
void blurLines(std::vector<float> &values, int lines, int lineStride, int length, int stride, int reach)
{
    std::vector<float> line(static_cast<std::size_t>(length));
    const float share = 1.0F / static_cast<float>(2 * reach + 1);
    for (int number = 0; number < lines; ++number) {
        float *const start = values.data() + static_cast<std::ptrdiff_t>(number) * lineStride;
        for (int i = 0; i < length; ++i)
            line[static_cast<std::size_t>(i)] = start[static_cast<std::ptrdiff_t>(i) * stride];
        float sum = 0;
        for (int i = -reach; i < length + reach; ++i) {
            if (i + reach < length)
                sum += line[static_cast<std::size_t>(i + reach)];
            if (i - reach - 1 >= 0)
                sum -= line[static_cast<std::size_t>(i - reach - 1)];
            if (i >= 0 && i < length)
                start[static_cast<std::ptrdiff_t>(i) * stride] = sum * share;
        }
    }
}

/// The shadow that a picture casts, as large as the picture.
QImage shadowOf(const QImage &picture, double radius)
{
    const int width = picture.width();
    const int height = picture.height();
    std::vector<float> alpha(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        for (int x = 0; x < width; ++x)
            alpha[static_cast<std::size_t>(y * width + x)] = static_cast<float>(qAlpha(line[x])) * shadowOpacity;
    }
    // Three running means come close to a bell whose deviation is half the radius.
    const int reach = std::max(1, static_cast<int>(std::lround(radius / 2)));
    for (int pass = 0; pass < 3; ++pass) {
        blurLines(alpha, height, width, width, 1, reach);
        blurLines(alpha, width, 1, height, width, reach);
    }
    QImage shadow(picture.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < height; ++y) {
        auto *line = reinterpret_cast<QRgb *>(shadow.scanLine(y));
        for (int x = 0; x < width; ++x)
            line[x] = qRgba(0, 0, 0, static_cast<int>(alpha[static_cast<std::size_t>(y * width + x)] + 0.5F));
    }
    return shadow;
}

bool isOpaque(const QImage &image)
{
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        if (std::any_of(line, line + image.width(), [](QRgb pixel) { return qAlpha(pixel) < 255; }))
            return false;
    }
    return true;
}

/// What the shape itself casts: the shadow of every picture that fills it, which is most of them.
QImage shadowOfShape(const QImage &picture, int side, ThemeStyle style)
{
    const auto key = QStringLiteral("icon shadow %1 %2").arg(side).arg(static_cast<int>(style));
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = QPixmap::fromImage(shadowOf(picture, side * shadowRadius));
        QPixmapCache::insert(key, pixmap);
    }
    return pixmap.toImage();
}

/// The part of a picture that is to fill the shape. A picture that is a plate of its own, with some room around, would
/// be smaller than the others and cut twice, by its own corners and by the style's.
QImage plateOf(const QImage &image)
{
    constexpr int solid = 128;
    constexpr double leastSolid = 0.75; // A full circle has more, a figure that stands free has less.
    constexpr double widestMargin = 0.15;
    const auto pixels = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QRect bounds;
    qint64 count = 0;
    for (int y = 0; y < pixels.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(pixels.constScanLine(y));
        int first = -1;
        int last = -1;
        for (int x = 0; x < pixels.width(); ++x) {
            if (qAlpha(line[x]) < solid)
                continue;
            first = first < 0 ? x : first;
            last = x;
            ++count;
        }
        if (first >= 0)
            bounds |= QRect(first, y, last - first + 1, 1);
    }
    const auto area = static_cast<double>(bounds.width()) * bounds.height();
    const int most = static_cast<int>(std::max(pixels.width(), pixels.height()) * widestMargin);
    const auto within = pixels.rect().adjusted(most, most, -most, -most);
    const bool isSquare = std::abs(bounds.width() - bounds.height()) <= bounds.width() / 16;
    const bool isPlate = isSquare && bounds.contains(within) && static_cast<double>(count) >= leastSolid * area;
    return isPlate ? pixels.copy(bounds) : image;
}

/// A picture in its shape above its shadow, `side` pixels wide with room on all sides.
QImage composed(const QImage &image, int side, int room, ThemeStyle style)
{
    const auto scaled = plateOf(image)
                            .scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                            .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QPoint offset(room + (side - scaled.width()) / 2, room + (side - scaled.height()) / 2);
    const QSize whole(side + 2 * room, side + 2 * room);
    QImage picture(whole, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QBrush brush(scaled);
    brush.setTransform(QTransform::fromTranslate(offset.x(), offset.y()));
    // A brush repeats its picture, so it is held to the place of that.
    painter.setClipRect(QRect(offset, scaled.size()));
    painter.fillPath(continuousRectangle(QRectF(room, room, side, side), AppIcon::radius(side, style)), brush);
    painter.end();

    QImage result(whole, QImage::Format_ARGB32_Premultiplied);
    result.fill(Qt::transparent);
    painter.begin(&result);
    const bool fills = scaled.size() == QSize(side, side) && isOpaque(scaled);
    const auto shadow = fills ? shadowOfShape(picture, side, style) : shadowOf(picture, side * shadowRadius);
    painter.drawImage(QPointF(0, std::round(side * shadowOffset)), shadow);
    painter.drawImage(0, 0, picture);
    return result;
}

void paintMonogram(QPainter &painter, const QRectF &square, const QString &name, ThemeStyle style)
{
    const auto &colors = AppIcon::palettes()[AppIcon::paletteIndex(name)];
    QLinearGradient fill(square.topLeft(), square.bottomRight());
    fill.setColorAt(0, colors.first);
    fill.setColorAt(1, colors.second);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(continuousRectangle(square, AppIcon::radius(square.width(), style)), fill);
    const auto text = AppIcon::monogram(name);
    painter.setPen(Qt::white);
    painter.setFont(roundedFont(square.width() * (characters(text) > 1 ? 0.36 : 0.46), QFont::Bold));
    painter.drawText(square, Qt::AlignCenter | Qt::TextSingleLine, text);
}

} // namespace

const std::array<AppIcon::Gradient, 7> &AppIcon::palettes()
{
    static const std::array<Gradient, 7> table{
        {{rgb(0.2F, 0.6F, 0.98F), rgb(0.36F, 0.36F, 0.95F)},
         {rgb(0.13F, 0.77F, 0.53F), rgb(0.05F, 0.55F, 0.62F)},
         {rgb(1.0F, 0.58F, 0.2F), rgb(0.96F, 0.3F, 0.36F)},
         {rgb(0.75F, 0.35F, 0.95F), rgb(0.45F, 0.25F, 0.85F)},
         {rgb(0.98F, 0.36F, 0.56F), rgb(0.85F, 0.2F, 0.45F)},
         {rgb(0.25F, 0.78F, 0.9F), rgb(0.15F, 0.48F, 0.85F)},
         {rgb(0.98F, 0.78F, 0.2F), rgb(0.95F, 0.52F, 0.12F)}}};
    return table;
}

std::size_t AppIcon::paletteIndex(const QString &name)
{
    std::uint32_t hash = 7;
    for (const char32_t scalar : name.toStdU32String())
        hash = hash * 31 + static_cast<std::uint32_t>(scalar);
    return hash % palettes().size();
}

QString AppIcon::monogram(const QString &name)
{
    QString result;
    int pieces = 0;
    for (qsizetype start = 0; start <= name.size() && pieces < 2;) {
        auto end = start;
        while (end < name.size() && !QStringLiteral(" -_").contains(name[end]))
            ++end;
        if (end > start) {
            result += firstCharacter(name.mid(start, end - start)).toUpper();
            ++pieces;
        }
        start = end + 1;
    }
    return result.isEmpty() ? QStringLiteral("?") : result;
}

double AppIcon::radius(double size, ThemeStyle style)
{
    switch (style) {
    case ThemeStyle::oneui:
        return size * 0.32;
    case ThemeStyle::pixel:
        return size * 0.5;
    case ThemeStyle::ios:
        return size * 0.225;
    case ThemeStyle::classic:
        break;
    }
    return size * 0.235;
}

void AppIcon::paint(QPainter &painter, const QRectF &square, const QString &name, const QImage &image, ThemeStyle style)
{
    if (image.isNull()) {
        paintMonogram(painter, square, name, style);
        return;
    }
    const double scale = painter.deviceTransform().m11();
    const int side = static_cast<int>(std::lround(square.width() * scale));
    const int room = static_cast<int>(std::ceil(side * shadowRoom));
    const auto key
        = QStringLiteral("icon %1 %2 %3 %4").arg(image.cacheKey()).arg(side).arg(scale).arg(static_cast<int>(style));
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = QPixmap::fromImage(composed(image, side, room, style));
        pixmap.setDevicePixelRatio(scale);
        QPixmapCache::insert(key, pixmap);
    }
    // On whole pixels, or the picture would be mixed with its neighbours'.
    const auto corner = painter.deviceTransform().map(square.topLeft());
    const QPointF snapped(std::round(corner.x()), std::round(corner.y()));
    const auto origin = painter.deviceTransform().inverted().map(snapped);
    painter.drawPixmap(origin - QPointF(room / scale, room / scale), pixmap);
}

} // namespace quillnest
