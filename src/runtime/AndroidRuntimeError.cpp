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

AndroidRuntimeError AndroidRuntimeError::portTaken(const QString &port)
{
    return {
        Case::portTaken,
        QStringLiteral("Another Android emulator is using port %1, which Quillnest needs. Quit it and try again.")
            .arg(port)};
}

AndroidRuntimeError AndroidRuntimeError::serverOfAnother(int port)
{
    return {
        Case::serverOfAnother,
        QStringLiteral(
            "Another user of this computer runs adb on port %1. Quillnest doesn't use it. Ask them to end it (adb "
            "kill-server), or start Quillnest with ANDROID_ADB_SERVER_PORT set to a free port.")
            .arg(port)};
}

} // namespace quillnest
