#include "common/Programs.h"

#include <QFileInfo>

namespace standin
{

QString deviceToolPath()
{
    // Through /proc, since the SDK's emulator is a link to ours and the helper lies beside the real file.
    const QString self = QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget();
    return QFileInfo(self).path() + QStringLiteral("/standin-device-tool");
}

} // namespace standin
