#include "benchmarks/BenchReport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cstdio>

namespace quillnest::bench
{

void BenchReport::add(const QString &name, const Samples &samples, const QString &unit)
{
    m_figures.push_back({name, samples, unit});
}

void BenchReport::print() const
{
    for (const auto &[name, samples, unit] : m_figures) {
        std::printf("%-40s %12.3f  %s", qUtf8Printable(name), samples.median(), qUtf8Printable(unit));
        if (samples.count() > 1)
            std::printf("  (%.3f to %.3f in %zu)", samples.least(), samples.greatest(), samples.count());
        std::printf("\n");
    }
}

bool BenchReport::write(const QString &path) const
{
    QJsonArray list;
    for (const auto &figure : m_figures) {
        list.append(QJsonObject{
            {QStringLiteral("name"), figure.name},
            {QStringLiteral("value"), figure.samples.median()},
            {QStringLiteral("unit"), figure.unit}});
    }
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(list).toJson()) > 0 && file.commit();
}

} // namespace quillnest::bench
