#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace standin
{

/// Runs one of the host's programs, found along PATH, and waits for it. Its standard output when it ends with status
/// 0, otherwise nothing. Any thread: nothing of this process runs between the fork and the new program.
std::optional<QByteArray> outputOf(const QString &program, const QStringList &arguments);

} // namespace standin
