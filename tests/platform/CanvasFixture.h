#pragma once

#include "platform/desktop/QtDrawing.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace quillnest
{

inline const Color black{0, 0, 0, 1};
inline const Color red{1, 0, 0, 1};
inline const Color green{0, 1, 0, 1};
inline const Color blue{0, 0, 1, 1};

inline Path polygon(std::initializer_list<Point> points)
{
    Path path;
    for (const auto point : points) {
        if (path.isEmpty())
            path.moveTo(point);
        else
            path.lineTo(point);
    }
    path.close();
    return path;
}

inline Path rectangle(double x, double y, double width, double height)
{
    return polygon({{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}});
}

inline Path line(Point from, Point to)
{
    Path path;
    path.moveTo(from);
    path.lineTo(to);
    return path;
}

/// A canvas of 100 by 100 pixels and a look at them.
class CanvasTest : public ::testing::Test
{
protected:
    /// The pixel whose lower left corner is at (x, y), as 0xAARRGGBB.
    std::uint32_t pixel(int x, int y) const
    {
        const auto image = canvas->image();
        return image.pixels.at(static_cast<std::size_t>((image.height - 1 - y) * image.width + x));
    }
    int alpha(int x, int y) const { return static_cast<int>(pixel(x, y) >> 24); }

    /// Whether every component is within `tolerance` of what it should be.
    ::testing::AssertionResult isNear(std::uint32_t seen, std::uint32_t wanted, int tolerance = 3) const
    {
        for (int shift = 0; shift < 32; shift += 8) {
            const auto part = [shift](std::uint32_t value) { return static_cast<int>(value >> shift & 0xFF); };
            if (std::abs(part(seen) - part(wanted)) > tolerance)
                return ::testing::AssertionFailure() << std::hex << seen << " is not near " << wanted;
        }
        return ::testing::AssertionSuccess();
    }

    /// The sum of all alphas, in pixels.
    double coveredArea() const
    {
        double sum = 0;
        for (const auto value : canvas->image().pixels)
            sum += (value >> 24) / 255.0;
        return sum;
    }

    /// Makes the bitmap transparent and the state the first one.
    void clear() { canvas = drawing.canvas(100, 100); }

    QtDrawing drawing;
    std::unique_ptr<Canvas> canvas = drawing.canvas(100, 100);
};

} // namespace quillnest
