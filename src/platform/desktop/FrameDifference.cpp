#include "platform/desktop/FrameDifference.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace quillnest::ffmpeg
{

namespace
{

constexpr int bandRows = 16;
/// Columns are told in steps of this many bytes, which is what is compared at once at the ends of a row.
constexpr int step = 16;

/// Columns that differ, left inclusive, right exclusive; none while `left` isn't below `right`.
struct Columns {
    int left;
    int right;
};

bool differ(const std::uint8_t *a, const std::uint8_t *b, int count)
{
    return std::memcmp(a, b, static_cast<std::size_t>(count)) != 0;
}

/// The first place in [from, to) at which the rows differ, in steps; `to` if there is none.
int firstDifference(const std::uint8_t *a, const std::uint8_t *b, int from, int to)
{
    while (from < to && !differ(a + from, b + from, std::min(step, to - from)))
        from += step;
    return std::min(from, to);
}

/// Behind the last place in [from, to) at which the rows differ, in steps; `from` if there is none.
int lastDifference(const std::uint8_t *a, const std::uint8_t *b, int from, int to)
{
    while (to > from) {
        const int at = std::max(to - step, from);
        if (differ(a + at, b + at, to - at))
            return to;
        to = at;
    }
    return from;
}

/// Widens `columns` by the differences of one row of `width` bytes; looks only at what isn't covered yet.
void widen(Columns &columns, const std::uint8_t *a, const std::uint8_t *b, int width)
{
    if (columns.left < columns.right) {
        columns.left = firstDifference(a, b, 0, columns.left);
        columns.right = lastDifference(a, b, columns.right, width);
    } else if (differ(a, b, width)) {
        columns = {firstDifference(a, b, 0, width), lastDifference(a, b, 0, width)};
    }
}

Columns bandColumns(const AVFrame &before, const AVFrame &after, int plane, int top, int rows, int width)
{
    Columns columns{width, 0};
    for (int row = top; row < top + rows && (columns.left > 0 || columns.right < width); ++row) {
        widen(
            columns, before.data[plane] + std::ptrdiff_t{row} * before.linesize[plane],
            after.data[plane] + std::ptrdiff_t{row} * after.linesize[plane], width);
    }
    return columns;
}

} // namespace

std::vector<QRect> differingParts(const AVFrame &before, const AVFrame &after)
{
    const int width = after.width;
    const int height = after.height;
    if (before.width != width || before.height != height || before.format != after.format
        || before.colorspace != after.colorspace || before.color_range != after.color_range)
        return {QRect(0, 0, width, height)};

    std::vector<QRect> parts;
    const int halfWidth = (width + 1) / 2;
    const int halfHeight = (height + 1) / 2;
    for (int top = 0; top < height; top += bandRows) {
        const int rows = std::min(bandRows, height - top);
        const int halfRows = std::min(bandRows / 2, halfHeight - top / 2);
        auto columns = bandColumns(before, after, 0, top, rows, width);
        for (const int plane : {1, 2}) {
            const auto chroma = bandColumns(before, after, plane, top / 2, halfRows, halfWidth);
            if (chroma.left < chroma.right)
                columns = {std::min(columns.left, 2 * chroma.left), std::max(columns.right, 2 * chroma.right)};
        }
        if (columns.left >= columns.right)
            continue;
        const int left = columns.left & ~1;
        const int right = std::min((columns.right + 1) & ~1, width);
        const QRect part(left, top, right - left, rows);
        // Bands that touch become one part: on its way to the screen a part costs more than a few columns.
        if (!parts.empty() && parts.back().y() + parts.back().height() == top)
            parts.back() = parts.back().united(part);
        else
            parts.push_back(part);
    }
    return parts;
}

} // namespace quillnest::ffmpeg
