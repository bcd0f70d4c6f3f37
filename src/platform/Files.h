#pragma once

#include <QFile>
#include <QFileInfo>

#include <optional>
#include <utility>

namespace quillnest
{

/// A file that this user may run.
inline bool isExecutableFile(const QString &path)
{
    const QFileInfo file(path);
    return file.isFile() && file.isExecutable();
}

/// What makes a file the same one, whatever its name: the disk and the number on it. Two files that exist at the same
/// time never have the same.
using FileIdentity = std::pair<quint64, quint64>;

/// Absent where there is no such file.
std::optional<FileIdentity> identityOf(const QString &path);
/// Of a file that is open, though its name may lead to another one by now.
std::optional<FileIdentity> identityOf(const QFile &open);

/// Waits until everything written to the open file lies on the disk; throws std::system_error.
void synchronize(const QFile &open);

} // namespace quillnest
