#include "benchmarks/Samples.h"

#include <algorithm>

namespace quillnest::bench
{

double Samples::median() const
{
    auto sorted = m_values;
    std::sort(sorted.begin(), sorted.end());
    const auto middle = sorted.size() / 2;
    return sorted.size() % 2 == 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
}

double Samples::least() const
{
    return *std::min_element(m_values.begin(), m_values.end());
}

double Samples::greatest() const
{
    return *std::max_element(m_values.begin(), m_values.end());
}

} // namespace quillnest::bench
