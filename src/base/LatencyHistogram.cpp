#include "base/LatencyHistogram.h"

#include <algorithm>
#include <cmath>

namespace quillnest
{

void LatencyHistogram::add(std::chrono::nanoseconds time)
{
    const double milliseconds = std::max(0.0, std::chrono::duration<double, std::milli>(time).count());
    const auto index = std::min(static_cast<double>(steps), milliseconds / step);
    ++m_counts[static_cast<std::size_t>(index)];
    ++m_count;
    m_worst = std::max(m_worst, milliseconds);
}

double LatencyHistogram::percentile(double share) const
{
    if (m_count == 0)
        return 0;
    const auto wanted = static_cast<std::uint64_t>(std::ceil(share * static_cast<double>(m_count)));
    std::uint64_t seen = 0;
    for (std::size_t index = 0; index < steps; ++index) {
        seen += m_counts[index];
        if (seen >= wanted && seen > 0)
            return std::min(m_worst, step * static_cast<double>(index + 1));
    }
    return m_worst;
}

} // namespace quillnest
