#include "platform/desktop/QtCanvas.h"

#include "platform/desktop/GradientRamp.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace quillnest
{

namespace
{
/// How far beyond the bitmap areas are kept: enough for edges there not to show.
constexpr double margin = 16;

constexpr std::uint32_t oddBytes = 0x00FF00FF;

/// All four bytes times share/255, rounded.
std::uint32_t scaled(std::uint32_t pixel, std::uint32_t share)
{
    const auto half = [share](std::uint32_t bytes) {
        const auto product = (bytes & oddBytes) * share;
        return (product + ((product >> 8) & oddBytes) + 0x00800080) >> 8 & oddBytes;
    };
    return half(pixel) | half(pixel >> 8) << 8;
}

/// Between two pixels, `share` of 256 on the way to the second.
std::uint32_t between(std::uint32_t first, std::uint32_t second, std::uint32_t share)
{
    const auto half = [share](std::uint32_t one, std::uint32_t other) {
        return ((one & oddBytes) * (256 - share) + (other & oddBytes) * share) >> 8 & oddBytes;
    };
    return half(first, second) | half(first >> 8, second >> 8) << 8;
}

/// A picture to be read between its pixels.
class Samples
{
public:
    Samples(const std::uint32_t *pixels, int width, int height) : m_pixels(pixels), m_width(width), m_height(height) { }

    /// The colour at a place in pixels from the top left corner; beyond the edges it goes on as at the edge.
    std::uint32_t at(double x, double y) const
    {
        const auto [left, right, across] = neighbours(x, m_width);
        const auto [above, below, down] = neighbours(y, m_height);
        const auto *upper = m_pixels + static_cast<std::size_t>(above) * static_cast<std::size_t>(m_width);
        const auto *lower = m_pixels + static_cast<std::size_t>(below) * static_cast<std::size_t>(m_width);
        return between(between(upper[left], upper[right], across), between(lower[left], lower[right], across), down);
    }

private:
    struct Neighbours {
        int first;
        int second;
        std::uint32_t share;
    };
    static Neighbours neighbours(double place, int count)
    {
        const double position = std::clamp(place - 0.5, 0.0, static_cast<double>(count - 1));
        const int first = static_cast<int>(position);
        return {first, std::min(first + 1, count - 1), static_cast<std::uint32_t>((position - first) * 256 + 0.5)};
    }

    const std::uint32_t *m_pixels;
    int m_width;
    int m_height;
};

bool isFinite(std::initializer_list<double> numbers)
{
    return std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); });
}
} // namespace

QtCanvas::QtCanvas(int width, int height)
    : m_image{
        width, height, std::vector<std::uint32_t>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))}
{
    m_state.transform = {1, 0, 0, -1, 0, static_cast<double>(height)};
    m_state.clip.bounds = QRect(0, 0, width, height);
}

void QtCanvas::restoreState()
{
    if (m_saved.empty())
        return;
    m_state = std::move(m_saved.back());
    m_saved.pop_back();
}

void QtCanvas::rotate(double radians)
{
    const double sine = std::sin(radians);
    const double cosine = std::cos(radians);
    transform({cosine, sine, -sine, cosine, 0, 0});
}

void QtCanvas::setAlpha(double alpha)
{
    m_state.alpha = unitValue(alpha);
}

template <typename Source> void QtCanvas::paint(const Area &area, Source pixel)
{
    const auto &clip = m_state.clip;
    const QRect bounds = area.bounds & clip.bounds;
    // A row of coverage with the canvas's own x as its index.
    const auto row = [](const Area &part, int y) -> const uchar * {
        return part.coverage ? part.coverage->constScanLine(y - part.bounds.top()) : nullptr;
    };
    for (int y = bounds.top(); y <= bounds.bottom(); ++y) {
        const auto *own = row(area, y);
        const auto *allowed = row(clip, y);
        auto *line = m_image.pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(m_image.width);
        for (int x = bounds.left(); x <= bounds.right(); ++x) {
            std::uint32_t coverage = own ? own[x - area.bounds.left()] : 255;
            if (coverage != 0 && allowed)
                coverage = scaled(coverage, allowed[x - clip.bounds.left()]);
            if (coverage == 0)
                continue;
            std::uint32_t color = pixel(x, y);
            if (coverage < 255)
                color = scaled(color, coverage);
            line[x] = color + scaled(line[x], 255 - (color >> 24));
        }
    }
}

QtCanvas::Area QtCanvas::rasterize(const Polygons &polygons, FillRule rule) const
{
    // The box that these were cut to keeps the numbers small.
    const auto box = boundsOf(polygons);
    const QRect around(
        QPoint(static_cast<int>(std::floor(box.left)), static_cast<int>(std::floor(box.top))),
        QPoint(static_cast<int>(std::ceil(box.right)) - 1, static_cast<int>(std::ceil(box.bottom)) - 1));
    const QRect bounds = around & m_state.clip.bounds;
    if (bounds.isEmpty())
        return {};

    QPainterPath path;
    path.setFillRule(rule == FillRule::evenOdd ? Qt::OddEvenFill : Qt::WindingFill);
    for (const auto &polygon : polygons) {
        path.moveTo(polygon.front().x - bounds.left(), polygon.front().y - bounds.top());
        for (std::size_t i = 1; i < polygon.size(); ++i)
            path.lineTo(polygon[i].x - bounds.left(), polygon[i].y - bounds.top());
        path.closeSubpath();
    }
    auto coverage = std::make_shared<QImage>(bounds.size(), QImage::Format_Alpha8);
    if (coverage->isNull())
        return {};
    coverage->fill(0);
    QPainter painter(coverage.get());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(path, Qt::black);
    painter.end();
    return {bounds, std::move(coverage)};
}

QtCanvas::Area QtCanvas::area(const Path &path, const Affine &map, FillRule rule) const
{
    const auto polygons = flatten(path, map, {-margin, -margin, m_image.width + margin, m_image.height + margin});
    return polygons ? rasterize(*polygons, rule) : Area();
}

void QtCanvas::clip(const Path &path, FillRule rule)
{
    auto narrower = area(path, m_state.transform, rule);
    if (!narrower.coverage) {
        m_state.clip = {};
        return;
    }
    const auto &bounds = narrower.bounds;
    const auto &before = m_state.clip;
    auto coverage = narrower.coverage->copy();
    bool whole = true;
    for (int y = 0; y < bounds.height(); ++y) {
        auto *line = coverage.scanLine(y);
        const auto *allowed = before.coverage ? before.coverage->constScanLine(y + bounds.top() - before.bounds.top())
                + bounds.left() - before.bounds.left()
                                              : nullptr;
        for (int x = 0; x < bounds.width(); ++x) {
            if (allowed)
                line[x] = static_cast<uchar>(scaled(line[x], allowed[x]));
            whole = whole && line[x] == 255;
        }
    }
    // A rectangle of whole pixels, which most clips are, costs nothing from here on.
    m_state.clip = {bounds, whole ? nullptr : std::make_shared<const QImage>(std::move(coverage))};
}

void QtCanvas::fillArea(const Area &area, const Color &color)
{
    paint(area, [pixel = premultiplied(color, m_state.alpha)](int, int) { return pixel; });
}

void QtCanvas::fill(const Path &path, FillRule rule)
{
    fillArea(area(path, m_state.transform, rule), m_state.fillColor);
}

void QtCanvas::stroke(const Path &path)
{
    // The outline is made at about the size that it is drawn at, and before the transform, so that the pen goes with
    // it.
    const double size = m_state.transform.stretch();
    if (!(size > 0) || !std::isfinite(size))
        return;
    const Affine reduce{1 / size, 0, 0, 1 / size, 0, 0};
    if (const auto outline = strokeOutline(path, m_state.pen, size))
        fillArea(area(*outline, m_state.transform.after(reduce), FillRule::winding), m_state.strokeColor);
}

void QtCanvas::drawImage(const Image &image, const Rect &rect)
{
    const auto count
        = static_cast<std::size_t>(std::max(image.width, 0)) * static_cast<std::size_t>(std::max(image.height, 0));
    const auto inverse = m_state.transform.inverted();
    if (count == 0 || image.pixels.size() != count || !inverse)
        return;
    const auto shape = area(rectPath(rect), m_state.transform, FillRule::winding);
    if (!shape.coverage)
        return;

    // Each pixel is read at one place, so a picture that shrinks is first brought near to its size on the bitmap by
    // means of averages.
    const auto target = [](double x, double y, int size) {
        return std::clamp(static_cast<int>(std::min(std::ceil(std::hypot(x, y) - 1e-6), 1e6)), 1, size);
    };
    const auto &map = m_state.transform;
    const int width = target(map.a * rect.width, map.b * rect.width, image.width);
    const int height = target(map.c * rect.height, map.d * rect.height, image.height);
    QImage smaller;
    if (width < image.width || height < image.height) {
        const QImage whole(
            reinterpret_cast<const uchar *>(image.pixels.data()), image.width, image.height, qsizetype{image.width} * 4,
            QImage::Format_ARGB32_Premultiplied);
        smaller = whole.scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                      .convertToFormat(QImage::Format_ARGB32_Premultiplied);
        if (smaller.size() != QSize(width, height))
            return;
    }
    const Samples samples(
        smaller.isNull() ? image.pixels.data() : reinterpret_cast<const std::uint32_t *>(smaller.constBits()), width,
        height);

    const double top = std::max(rect.y, rect.y + rect.height);
    const double left = std::min(rect.x, rect.x + rect.width);
    const double across = width / std::abs(rect.width);
    const double down = height / std::abs(rect.height);
    const auto alpha = static_cast<std::uint32_t>(std::lround(m_state.alpha * 255));
    paint(shape, [&](int x, int y) {
        const auto place = inverse->map({x + 0.5, y + 0.5});
        return scaled(samples.at((place.x - left) * across, (top - place.y) * down), alpha);
    });
}

template <typename Colors> void QtCanvas::drawGradient(const Gradient &gradient, bool isFlat, Colors position)
{
    const auto inverse = m_state.transform.inverted();
    if (gradient.stops.empty() || !inverse)
        return;
    const GradientRamp ramp(gradient, m_state.alpha);
    const Area everything{m_state.clip.bounds, nullptr};
    if (isFlat)
        paint(everything, [pixel = ramp.last()](int, int) { return pixel; });
    else
        paint(everything, [&](int x, int y) { return ramp.at(position(inverse->map({x + 0.5, y + 0.5}))); });
}

void QtCanvas::drawLinearGradient(const Gradient &gradient, Point start, Point end)
{
    const auto way = end - start;
    if (!isFinite({start.x, start.y, way.x, way.y}))
        return;
    // In units of the way's longer side no square overflows or vanishes.
    const double unit = std::max(std::abs(way.x), std::abs(way.y));
    const auto direction = unit > 0 ? Point{way.x / unit, way.y / unit} : Point();
    const double length = direction.x * direction.x + direction.y * direction.y;
    drawGradient(gradient, unit == 0, [&](Point point) {
        const auto from = point - start;
        return (from.x / unit * direction.x + from.y / unit * direction.y) / length;
    });
}

void QtCanvas::drawRadialGradient(const Gradient &gradient, Point center, double radius)
{
    if (!isFinite({center.x, center.y, radius}))
        return;
    drawGradient(gradient, radius <= 0, [&](Point point) {
        const auto from = point - center;
        const double x = from.x / radius;
        const double y = from.y / radius;
        return std::sqrt(x * x + y * y);
    });
}

} // namespace quillnest
