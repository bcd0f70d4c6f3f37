#pragma once

#include "benchmarks/BenchReport.h"

#include <QRegularExpression>
#include <QStringList>

namespace quillnest::bench
{

/// Something that can be measured by itself.
struct Benchmark {
    QString name;
    /// The figures that it adds; where the display's size ends a name, what stands before it.
    QStringList figures;
    void (*run)(BenchReport &report);
    /// Too long for every day: runs only when the pattern asks for it.
    bool onlyByName = false;

    /// Whether the pattern finds something in its name or in one of its figures' names.
    bool matches(const QRegularExpression &pattern) const
    {
        return name.contains(pattern) || !figures.filter(pattern).isEmpty();
    }
};

} // namespace quillnest::bench
