#pragma once

#include <cstddef>
#include <vector>

namespace quillnest::bench
{

/// What repeated measurements of one thing gave. Never empty where it is asked.
class Samples
{
public:
    Samples() = default;
    Samples(std::initializer_list<double> values) : m_values(values) { }

    void add(double value) { m_values.push_back(value); }
    std::size_t count() const { return m_values.size(); }

    /// The middle one in order of size; of an even number, the mean of the two in the middle.
    double median() const;
    double least() const;
    double greatest() const;

private:
    std::vector<double> m_values;
};

} // namespace quillnest::bench
