#include "launcher/wallpaper/WallpaperView.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

namespace quillnest
{

namespace
{

/// A colour in parts of 255, unrounded.
struct Tone {
    float red = 0;
    float green = 0;
    float blue = 0;

    Tone operator+(const Tone &other) const { return {red + other.red, green + other.green, blue + other.blue}; }
    Tone operator*(float factor) const { return {red * factor, green * factor, blue * factor}; }
};

Tone tone(const QColor &color)
{
    return Tone{color.redF(), color.greenF(), color.blueF()} * 255;
}

Tone mix(const Tone &a, const Tone &b, float share)
{
    return a * (1 - share) + b * share;
}

/// How dark the veil is at a height from 0, the top, to 1.
float veil(float height)
{
    constexpr float top = 0.35F;
    constexpr float middle = 0.15F;
    constexpr float bottom = 0.45F;
    return height < 0.5F ? top + (middle - top) * height * 2 : middle + (bottom - middle) * (height * 2 - 1);
}

/// Thresholds from 0 to 1 in an order that the eye doesn't see: what a tone has beyond a whole value lights as many
/// pixels of a field of 8 by 8 as it is worth, so a slow gradient has no steps.
float threshold(int x, int y)
{
    int value = 0;
    int mask = 4;
    for (int bit = 0; bit < 6; bit += 2, mask >>= 1) {
        const int a = (x & mask) ? 1 : 0;
        const int b = (y & mask) ? 1 : 0;
        value |= ((a ^ b) << (bit + 1) | b << bit);
    }
    return (static_cast<float>(value) + 0.5F) / 64;
}

/// Paints rows of tones below the veil and the material.
class Screen
{
public:
    Screen(QSize pixels, const std::optional<WallpaperView::Material> &material)
        : m_image(pixels, QImage::Format_RGB32)
        , m_tint(material ? tone(material->tint) : Tone())
        , m_share(material ? material->opacity : 0)
    {
        for (int y = 0; y < 8; ++y) {
            for (int x = 0; x < 8; ++x)
                m_thresholds[y][x] = threshold(x, y);
        }
    }

    /// `at` gives the tone of each pixel of the row.
    template <typename ToneAt> void paintRow(int y, const ToneAt &at)
    {
        auto *line = reinterpret_cast<QRgb *>(m_image.scanLine(y));
        const auto height = static_cast<float>(m_image.height());
        const float light = (1 - veil((static_cast<float>(y) + 0.5F) / height)) * (1 - m_share);
        const Tone ground = m_tint * m_share;
        for (int x = 0; x < m_image.width(); ++x) {
            const Tone color = at(x) * light + ground;
            const float add = m_thresholds[y & 7][x & 7];
            line[x] = qRgb(level(color.red, add), level(color.green, add), level(color.blue, add));
        }
    }

    QImage take() { return std::move(m_image); }

private:
    static int level(float value, float add) { return std::min(255, static_cast<int>(value + add)); }

    QImage m_image;
    const Tone m_tint;
    const float m_share;
    float m_thresholds[8][8];
};

QImage renderGradient(
    const std::array<QColor, 3> &colors, QSize pixels, const std::optional<WallpaperView::Material> &material)
{
    // Fine enough that two neighbours differ by less than a tone's rounding.
    constexpr int steps = 2048;
    std::vector<Tone> ramp(steps + 1);
    const std::array<Tone, 3> tones{tone(colors[0]), tone(colors[1]), tone(colors[2])};
    for (int i = 0; i <= steps; ++i) {
        const float at = 2 * static_cast<float>(i) / steps;
        ramp[static_cast<std::size_t>(i)] = at < 1 ? mix(tones[0], tones[1], at) : mix(tones[1], tones[2], at - 1);
    }
    Screen screen(pixels, material);
    const auto width = static_cast<float>(pixels.width());
    const auto height = static_cast<float>(pixels.height());
    const float length = width * width + height * height;
    for (int y = 0; y < pixels.height(); ++y) {
        const float start = (static_cast<float>(y) + 0.5F) * height / length * steps;
        const float step = width / length * steps;
        screen.paintRow(
            y, [&](int x) { return ramp[static_cast<std::size_t>(start + (static_cast<float>(x) + 0.5F) * step)]; });
    }
    return screen.take();
}

/// The part of a picture that fills an area of the given proportions.
QImage cropped(const QImage &image, QSize proportions)
{
    const auto size = QSizeF(proportions).scaled(image.size(), Qt::KeepAspectRatio).toSize();
    return image.copy(QRect(QPoint((image.width() - size.width()) / 2, (image.height() - size.height()) / 2), size));
}

/// Each tone becomes the mean of its neighbourhood, a few times over, which comes close to a bell.
void blur(std::vector<std::vector<Tone>> &grid)
{
    constexpr int passes = 3;
    constexpr int reach = 3;
    const int rows = static_cast<int>(grid.size());
    const int columns = static_cast<int>(grid.front().size());
    const auto mean = [](int at, int count, const auto &toneAt) {
        Tone sum;
        for (int i = at - reach; i <= at + reach; ++i)
            sum = sum + toneAt(static_cast<std::size_t>(std::clamp(i, 0, count - 1)));
        return sum * (1.0F / (2 * reach + 1));
    };
    for (int pass = 0; pass < passes; ++pass) {
        auto across = grid;
        for (std::size_t y = 0; y < grid.size(); ++y) {
            for (int x = 0; x < columns; ++x)
                across[y][static_cast<std::size_t>(x)] = mean(x, columns, [&](std::size_t i) { return grid[y][i]; });
        }
        for (int y = 0; y < rows; ++y) {
            for (std::size_t x = 0; x < grid.front().size(); ++x)
                grid[static_cast<std::size_t>(y)][x] = mean(y, rows, [&](std::size_t i) { return across[i][x]; });
        }
    }
}

/// A photo so blurred that a few points hold all of it.
QImage renderFrosted(const QImage &photo, QSize pixels, const WallpaperView::Material &material)
{
    constexpr int columns = 40;
    const int rows = std::max(2, columns * pixels.height() / std::max(1, pixels.width()));
    const auto small = cropped(photo, pixels)
                           .scaled(columns, rows, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                           .convertToFormat(QImage::Format_RGB32);
    std::vector<std::vector<Tone>> grid(static_cast<std::size_t>(rows), std::vector<Tone>(columns));
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x)
            grid[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = tone(small.pixelColor(x, y));
    }
    blur(grid);
    const auto place = [](float position, int count) {
        const float clamped = std::clamp(position, 0.0F, static_cast<float>(count - 1));
        const int index = std::min(static_cast<int>(clamped), count - 2);
        const float part = clamped - static_cast<float>(index);
        return std::pair(index, part);
    };
    std::vector<std::pair<int, float>> across;
    for (int x = 0; x < pixels.width(); ++x)
        across.push_back(place(static_cast<float>(x * columns) / static_cast<float>(pixels.width()) - 0.5F, columns));
    Screen screen(pixels, material);
    std::vector<Tone> line(columns);
    for (int y = 0; y < pixels.height(); ++y) {
        const auto [row, share]
            = place(static_cast<float>(y * rows) / static_cast<float>(pixels.height()) - 0.5F, rows);
        for (std::size_t x = 0; x < columns; ++x)
            line[x] = mix(grid[static_cast<std::size_t>(row)][x], grid[static_cast<std::size_t>(row) + 1][x], share);
        screen.paintRow(y, [&](int x) {
            const auto [column, part] = across[static_cast<std::size_t>(x)];
            return mix(line[static_cast<std::size_t>(column)], line[static_cast<std::size_t>(column) + 1], part);
        });
    }
    return screen.take();
}

QImage renderPhoto(const QImage &photo, QSize pixels)
{
    const auto image = cropped(photo, pixels)
                           .scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                           .convertToFormat(QImage::Format_RGB32);
    Screen screen(image.size(), std::nullopt);
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        screen.paintRow(y, [line](int x) {
            return Tone{
                static_cast<float>(qRed(line[x])), static_cast<float>(qGreen(line[x])),
                static_cast<float>(qBlue(line[x]))};
        });
    }
    return screen.take();
}

/// The veil by itself.
QImage renderVeil(QSize pixels)
{
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < pixels.height(); ++y) {
        const float height = (static_cast<float>(y) + 0.5F) / static_cast<float>(pixels.height());
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < pixels.width(); ++x)
            line[x] = qRgba(0, 0, 0, static_cast<int>(255 * veil(height) + threshold(x & 7, y & 7)));
    }
    return image;
}

} // namespace

QImage WallpaperView::render(
    const Platform &platform, const QString &id, QSize pixels, const std::optional<Material> &material)
{
    if (pixels.isEmpty())
        return {};
    if (const auto *preset = Wallpaper::preset(id))
        return renderGradient(preset->colors, pixels, material);
    const auto photo = Wallpaper::image(platform, id);
    if (!photo.isNull())
        return material ? renderFrosted(photo, pixels, *material) : renderPhoto(photo, pixels);
    return material ? QImage() : renderVeil(pixels);
}

} // namespace quillnest
