#pragma once

#include "benchmarks/Samples.h"

#include <QString>

#include <vector>

namespace quillnest::bench
{

/// The figures of a run: a table for people, and a list of {"name", "value", "unit"} as JSON. Names are stable.
class BenchReport
{
public:
    /// The figure is the median; the table shows the spread beside it.
    void add(const QString &name, const Samples &samples, const QString &unit);
    void add(const QString &name, double value, const QString &unit) { add(name, Samples{value}, unit); }

    void print() const;
    bool write(const QString &path) const;

private:
    struct Figure {
        QString name;
        Samples samples;
        QString unit;
    };
    std::vector<Figure> m_figures;
};

} // namespace quillnest::bench
