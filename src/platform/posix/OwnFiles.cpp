#include "platform/OwnFiles.h"

#include <QFile>

#include <sys/stat.h>

namespace quillnest
{

void keepFilesPrivate()
{
    ::umask(0077);
}

void closeToOthers(const QString &folder)
{
    ::chmod(QFile::encodeName(folder).constData(), 0700);
}

} // namespace quillnest
