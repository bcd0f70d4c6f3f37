#pragma once

#include <array>
#include <chrono>
#include <cstdint>

namespace quillnest
{

/// Counts how long things took, in steps of a twentieth of a millisecond up to 200 ms, so that percentiles of any
/// number of them cost a fixed amount of memory. Not synchronised.
class LatencyHistogram
{
public:
    void add(std::chrono::nanoseconds time);

    std::uint64_t count() const { return m_count; }
    /// The time in milliseconds below which this share (0 to 1) of them stayed, rounded up to a step; 0 without any.
    double percentile(double share) const;
    /// The longest, in milliseconds and exact.
    double worst() const { return m_worst; }

private:
    static constexpr double step = 0.05;
    static constexpr std::size_t steps = 4000;

    std::array<std::uint32_t, steps + 1> m_counts{};
    std::uint64_t m_count = 0;
    double m_worst = 0;
};

} // namespace quillnest
