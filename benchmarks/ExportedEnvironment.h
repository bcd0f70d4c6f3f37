#pragma once

#include <QProcessEnvironment>

namespace quillnest::bench
{

/// Puts this process itself on a test desktop, for as long as the object lives.
class ExportedEnvironment
{
public:
    explicit ExportedEnvironment(const QProcessEnvironment &environment);
    ~ExportedEnvironment();
    ExportedEnvironment(const ExportedEnvironment &) = delete;
    ExportedEnvironment &operator=(const ExportedEnvironment &) = delete;

private:
    const QProcessEnvironment m_before = QProcessEnvironment::systemEnvironment();
    const QStringList m_names;
};

} // namespace quillnest::bench
