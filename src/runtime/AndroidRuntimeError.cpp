#include "runtime/AndroidRuntimeError.h"

namespace quillnest
{

AndroidRuntimeError::AndroidRuntimeError(Case errorCase, QString description)
    : m_case(errorCase), m_description(std::move(description)), m_bytes(m_description.toUtf8())
{
}

AndroidRuntimeError AndroidRuntimeError::toolMissing(const QString &tool)
{
    return {Case::toolMissing, QStringLiteral("Android tool missing: ") + tool};
}

AndroidRuntimeError AndroidRuntimeError::commandFailed(const QString &text)
{
    return {Case::commandFailed, text.isEmpty() ? QStringLiteral("Android command failed") : text};
}

AndroidRuntimeError AndroidRuntimeError::bootTimeout()
{
    return {Case::bootTimeout, QStringLiteral("Quillnest Android did not finish starting")};
}

AndroidRuntimeError AndroidRuntimeError::packageNameMissing()
{
    return {Case::packageNameMissing, QStringLiteral("Could not read the APK package name")};
}

} // namespace quillnest
