#pragma once

#include <QString>

#include <vector>

namespace quillnest::bench
{

/// The figures of a run: a table for people, and a list of {"name", "value", "unit"} as JSON. Names are stable.
class BenchReport
{
public:
    void add(const QString &name, double value, const QString &unit);
    void print() const;
    bool write(const QString &path) const;

private:
    struct Figure {
        QString name;
        double value;
        QString unit;
    };
    std::vector<Figure> m_figures;
};

} // namespace quillnest::bench
