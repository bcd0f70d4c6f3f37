#pragma once

#include "platform/Canvas.h"

#include <algorithm>
#include <cmath>

namespace quillnest
{

/// 0 to 1; what is no number is 0.
inline double unitValue(double value)
{
    return value > 0 ? std::min(value, 1.0) : 0.0;
}

/// As a pixel of an Image.
inline std::uint32_t premultiplied(const Color &color, double alpha)
{
    const double opacity = unitValue(color.alpha) * alpha;
    const auto part
        = [](double value, int shift) { return static_cast<std::uint32_t>(std::lround(value * 255)) << shift; };
    return part(opacity, 24) | part(unitValue(color.red) * opacity, 16) | part(unitValue(color.green) * opacity, 8)
        | part(unitValue(color.blue) * opacity, 0);
}

/// The colours of a gradient along its way.
class GradientRamp
{
public:
    /// `gradient` has at least one stop. `alpha` is from 0 to 1.
    GradientRamp(const Gradient &gradient, double alpha) : m_stops(gradient.stops), m_alpha(alpha)
    {
        for (auto &stop : m_stops) {
            stop.position = unitValue(stop.position);
            stop.color
                = {unitValue(stop.color.red), unitValue(stop.color.green), unitValue(stop.color.blue),
                   unitValue(stop.color.alpha)};
        }
        std::stable_sort(m_stops.begin(), m_stops.end(), [](const Gradient::Stop &one, const Gradient::Stop &other) {
            return one.position < other.position;
        });
    }

    /// The pixel at a position, whatever that is.
    std::uint32_t at(double position) const
    {
        const auto next
            = std::upper_bound(m_stops.begin(), m_stops.end(), position, [](double value, const Gradient::Stop &stop) {
                  return value < stop.position;
              });
        if (next == m_stops.begin())
            return premultiplied(m_stops.front().color, m_alpha);
        if (next == m_stops.end())
            return last();
        const auto &from = *(next - 1);
        const double share = (position - from.position) / (next->position - from.position);
        const auto mix = [share](double one, double other) { return one + (other - one) * share; };
        const auto &to = next->color;
        return premultiplied(
            {mix(from.color.red, to.red), mix(from.color.green, to.green), mix(from.color.blue, to.blue),
             mix(from.color.alpha, to.alpha)},
            m_alpha);
    }

    std::uint32_t last() const { return premultiplied(m_stops.back().color, m_alpha); }

private:
    std::vector<Gradient::Stop> m_stops;
    const double m_alpha;
};

} // namespace quillnest
