#pragma once

#include "platform/Image.h"
#include "platform/Path.h"

#include <memory>
#include <optional>
#include <span>

namespace quillnest
{

/// Components from 0 to 1, colours not premultiplied. Drawing keeps them within that, and what is no number is 0.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    bool operator==(const Color &) const = default;

    /// From 0xAARRGGBB.
    static Color fromArgb(std::uint32_t argb)
    {
        const auto part = [argb](int shift) { return ((argb >> shift) & 0xFF) / 255.0; };
        return {part(16), part(8), part(0), part(24)};
    }
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const Rect &) const = default;
};

enum class FillRule { winding, evenOdd };
enum class LineCap { butt, round, square };
enum class LineJoin { miter, round, bevel };

/// Colours along a line or a ray. Positions are from 0 to 1 and may come in any order; at equal positions the later one
/// follows the earlier one, a hard edge. Colours are interpolated component by component, not premultiplied.
struct Gradient {
    struct Stop {
        double position = 0;
        Color color;

        bool operator==(const Stop &) const = default;
    };
    std::vector<Stop> stops;

    bool operator==(const Gradient &) const = default;
};

/// A bitmap to draw into. Antialiased, images scaled smoothly, drawing composed source over destination.
///
/// Coordinates: the origin is the bottom left corner, y points upward, one unit is one pixel; transforms change that
/// for what follows. Angles are in radians, positive ones turn the x axis towards the y axis. A rectangle may have
/// negative sides. Whatever has a coordinate that is no number or infinite, or becomes so by the transform, or lies
/// under a transform that can't be inverted, draws nothing, and as a clip leaves nothing. Finite coordinates may be of
/// any size.
///
/// The graphics state holds the transform, the clip, the alpha, both colours, the line's width, cap and join.
/// Initially: identity, no clip, 1, opaque black, 1, butt, miter with a limit of 10. A canvas belongs to one thread at
/// a time.
class Canvas
{
public:
    virtual ~Canvas() = default;

    virtual void saveState() = 0;
    /// Nothing without a state to go back to.
    virtual void restoreState() = 0;

    virtual void translate(double x, double y) = 0;
    virtual void scale(double x, double y) = 0;
    virtual void rotate(double radians) = 0;

    /// Applies to everything drawn, on top of the colours' own; kept between 0 and 1.
    virtual void setAlpha(double alpha) = 0;
    virtual void setFillColor(const Color &color) = 0;
    virtual void setStrokeColor(const Color &color) = 0;
    /// In units of the transform at the time of the stroke, so an uneven scale gives an uneven pen. Strokes of a width
    /// that isn't above 0 draw nothing.
    virtual void setLineWidth(double width) = 0;
    virtual void setLineCap(LineCap cap) = 0;
    virtual void setLineJoin(LineJoin join) = 0;

    /// Narrows the clip to what lies in the path as well, with smooth edges.
    virtual void clip(const Path &path, FillRule rule) = 0;

    virtual void fill(const Path &path, FillRule rule) = 0;
    /// A subpath without length is a dot if the caps are round or square, else nothing.
    virtual void stroke(const Path &path) = 0;
    virtual void fillRect(const Rect &rect) = 0;
    virtual void fillEllipse(const Rect &rect) = 0;
    /// The whole picture, scaled into the rectangle, its top at the rectangle's greater y.
    virtual void drawImage(const Image &image, const Rect &rect) = 0;

    /// Both paint everything inside the clip: past their ends they go on in the first and in the last colour. Where
    /// start and end are one point, or the radius isn't above 0, that is the last colour alone; without stops it is
    /// nothing.
    virtual void drawLinearGradient(const Gradient &gradient, Point start, Point end) = 0;
    /// From radius 0 to `radius` about the centre.
    virtual void drawRadialGradient(const Gradient &gradient, Point center, double radius) = 0;

    /// What has been drawn so far.
    virtual Image image() const = 0;
};

/// The host's means to draw, read and write pictures. Any thread.
class Drawing
{
public:
    virtual ~Drawing() = default;

    /// A transparent bitmap of that many pixels; null if the host can't make it.
    virtual std::unique_ptr<Canvas> canvas(int width, int height) = 0;

    /// The first picture of a PNG, JPEG or WebP file, as it is stored: not turned by what its camera noted. Absent if
    /// it is none of these, is broken, or is larger than `largestPicture` pixels; a JPEG of which only the end is
    /// missing is what there is of it.
    virtual std::optional<Image> decode(std::span<const std::uint8_t> bytes) = 0;
    static constexpr std::int64_t largestPicture = 16 * 1024 * 1024;

    /// The picture as a PNG file; absent for an empty picture.
    virtual std::optional<std::vector<std::uint8_t>> encodePng(const Image &image) = 0;
};

} // namespace quillnest
