#include "benchmarks/ExportedEnvironment.h"

namespace quillnest::bench
{

ExportedEnvironment::ExportedEnvironment(const QProcessEnvironment &environment) : m_names(environment.keys())
{
    for (const auto &name : m_names)
        qputenv(name.toLocal8Bit().constData(), environment.value(name).toLocal8Bit());
}

ExportedEnvironment::~ExportedEnvironment()
{
    for (const auto &name : m_names) {
        if (m_before.contains(name))
            qputenv(name.toLocal8Bit().constData(), m_before.value(name).toLocal8Bit());
        else
            qunsetenv(name.toLocal8Bit().constData());
    }
}

} // namespace quillnest::bench
