#include "platform/Files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace quillnest
{

namespace
{
FileIdentity identity(const struct stat &status)
{
    return {static_cast<quint64>(status.st_dev), static_cast<quint64>(status.st_ino)};
}
} // namespace

std::optional<FileIdentity> identityOf(const QString &path)
{
    struct stat status {
    };
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? std::optional(identity(status)) : std::nullopt;
}

std::optional<FileIdentity> identityOf(const QFile &open)
{
    struct stat status {
    };
    return ::fstat(open.handle(), &status) == 0 ? std::optional(identity(status)) : std::nullopt;
}

void synchronize(const QFile &open)
{
    if (::fsync(open.handle()) != 0)
        throw std::system_error(errno, std::generic_category(), open.fileName().toStdString());
}

} // namespace quillnest
