#include "runtime/AndroidBridgeError.h"

namespace quillnest
{

AndroidBridgeError::AndroidBridgeError(Case errorCase, QString description)
    : DescribedError(std::move(description)), m_case(errorCase)
{
}

AndroidBridgeError AndroidBridgeError::missing(const QString &item)
{
    return {
        Case::missing,
        QStringLiteral("Quillnest's Android bridge is incomplete (%1 is missing). Reinstall Quillnest.").arg(item)};
}

AndroidBridgeError AndroidBridgeError::corrupted(const QString &item)
{
    return {
        Case::corrupted,
        QStringLiteral("Quillnest's Android bridge failed its integrity check (%1). Reinstall Quillnest.").arg(item)};
}

AndroidBridgeError AndroidBridgeError::manifestUnreadable(const QString &detail)
{
    return {
        Case::manifestUnreadable,
        QStringLiteral("Quillnest's Android bridge manifest could not be read: %1").arg(detail)};
}

} // namespace quillnest
