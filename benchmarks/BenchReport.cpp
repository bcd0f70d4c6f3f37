#include "benchmarks/BenchReport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cstdio>

namespace quillnest::bench
{

void BenchReport::add(const QString &name, double value, const QString &unit)
{
    m_figures.push_back({name, value, unit});
}

void BenchReport::print() const
{
    for (const auto &figure : m_figures)
        std::printf("%-40s %12.3f  %s\n", qUtf8Printable(figure.name), figure.value, qUtf8Printable(figure.unit));
}

bool BenchReport::write(const QString &path) const
{
    QJsonArray list;
    for (const auto &figure : m_figures) {
        list.append(QJsonObject{
            {QStringLiteral("name"), figure.name},
            {QStringLiteral("value"), figure.value},
            {QStringLiteral("unit"), figure.unit}});
    }
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(list).toJson()) > 0 && file.commit();
}

} // namespace quillnest::bench
