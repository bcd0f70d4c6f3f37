#include "ios/ExternalWindowError.h"

namespace quillnest
{

namespace
{

QString sentence(ExternalWindowError::Kind kind, const QString &systemName)
{
    using Kind = ExternalWindowError::Kind;
    switch (kind) {
    case Kind::permissionRequired:
        return QStringLiteral("Accessibility permission is required for compact windows");
    case Kind::appNotRunning:
        return QStringLiteral("The mobile app window is not running yet");
    case Kind::windowNotFound:
        return QStringLiteral("No resizable window was found");
    case Kind::operationFailed:
        break;
    }
    return QStringLiteral("%1 did not allow the window resize").arg(systemName);
}

} // namespace

ExternalWindowError::ExternalWindowError(Kind kind, const QString &systemName)
    : DescribedError(sentence(kind, systemName)), m_kind(kind)
{
}

} // namespace quillnest
