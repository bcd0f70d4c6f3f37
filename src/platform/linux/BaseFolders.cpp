#include "platform/linux/BaseFolders.h"

#include <QDir>

namespace quillnest
{

QString baseFolder(const char *variable, const QString &fallback)
{
    const auto value = qEnvironmentVariable(variable);
    return QDir::isAbsolutePath(value) ? QDir::cleanPath(value) : QDir::homePath() + fallback;
}

QString configFolder()
{
    return baseFolder("XDG_CONFIG_HOME", QStringLiteral("/.config"));
}

} // namespace quillnest
