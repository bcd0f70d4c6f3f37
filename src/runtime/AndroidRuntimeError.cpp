#include "runtime/AndroidRuntimeError.h"

namespace quillnest
{

namespace
{
/// A tool may say megabytes, and this is for a line of the panel and of the log: its beginning and its end.
QString bounded(const QString &text)
{
    constexpr qsizetype part = 1000;
    return text.size() <= 2 * part ? text : text.first(part) + QStringLiteral(" … ") + text.last(part);
}
} // namespace

AndroidRuntimeError::AndroidRuntimeError(Case errorCase, QString description)
    : DescribedError(std::move(description)), m_case(errorCase)
{
}

AndroidRuntimeError AndroidRuntimeError::toolMissing(const QString &tool)
{
    return {Case::toolMissing, QStringLiteral("Android tool missing: ") + tool};
}

AndroidRuntimeError AndroidRuntimeError::commandFailed(const QString &text)
{
    return {Case::commandFailed, text.isEmpty() ? QStringLiteral("Android command failed") : bounded(text)};
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
