#include "runtime/AppInstaller.h"

#include "package/APKManifestReader.h"
#include "runtime/AndroidRuntimeError.h"
#include "runtime/InstallRecords.h"
#include "runtime/PackageName.h"
#include "runtime/PlainFailures.h"

#include <algorithm>

namespace quillnest
{

namespace
{
QString seconds(double value)
{
    return QString::number(value, 'f', 2);
}

std::optional<QString> anyValidName(const QSet<QString> &packages)
{
    for (const auto &package : packages) {
        if (isValidPackageName(package))
            return package;
    }
    return std::nullopt;
}
} // namespace

AppInstaller::AppInstaller(std::shared_ptr<const AndroidCommands> commands) : m_commands(std::move(commands)) { }

QString AppInstaller::install(const QString &apkPath) const
{
    auto &clock = *m_commands->platform().clock;
    auto &settings = *m_commands->platform().settings;
    const auto begin = clock.monotonic();
    const auto elapsed = [&] { return seconds(secondsBetween(begin, clock.monotonic())); };

    const auto fingerprint = InstallRecords::fingerprint(apkPath);
    const auto recorded = InstallRecords::package(settings, apkPath, fingerprint);
    if (recorded && isStillInstalled(*recorded)) {
        m_commands->log().write(QStringLiteral("already installed package=%1 check=%2s").arg(*recorded, elapsed()));
        return *recorded;
    }
    const auto package = installedPackage(apkPath);
    // An app that can't be launched gets no record, so its next launch tries the whole install again.
    requireLaunchable(package);
    InstallRecords::write(settings, apkPath, fingerprint, package);
    m_commands->log().write(QStringLiteral("installed package=%1 install+resolve=%2s").arg(package, elapsed()));
    return package;
}

bool AppInstaller::isStillInstalled(const QString &package) const
{
    if (!isValidPackageName(package))
        return false;
    try {
        const QStringList query{QStringLiteral("shell"), QStringLiteral("pm"), QStringLiteral("path"), package};
        return m_commands->runOnDevice(query).contains(QLatin1String("package:"));
    } catch (const std::exception &) {
        return false;
    }
}

QString AppInstaller::installedPackage(const QString &apkPath) const
{
    const std::scoped_lock alone(m_installing);
    if (m_commands->whoseDevice() == AndroidCommands::Whose::anothers)
        throw AndroidRuntimeError::portTaken(AndroidCommands::consolePort());
    const auto before = m_commands->thirdPartyPackages();
    std::optional<QString> named;
    try {
        named = packageIdentifier(apkPath);
    } catch (const std::exception &) {
        // What the install adds to the device tells it as well.
    }
    try {
        m_commands->runOnDevice(
            {QStringLiteral("install"), QStringLiteral("--no-streaming"), QStringLiteral("-r"), apkPath});
    } catch (const AndroidRuntimeError &error) {
        if (error.errorCase() != AndroidRuntimeError::Case::commandFailed)
            throw;
        throw AndroidRuntimeError::commandFailed(PlainFailures::ofInstall(error.description()));
    }
    const auto after = m_commands->thirdPartyPackages();
    const auto added = anyValidName(after - before);
    // Two readers may find two names in one file. What the device has now and hadn't before is the one that counts.
    if (added && (!named || (after - before).size() == 1)) {
        if (named && *named != *added)
            m_commands->log().write(QStringLiteral("package name differs manifest=%1 device=%2").arg(*named, *added));
        return *added;
    }
    if (named) {
        // An update of an app of the system isn't among the listed ones.
        if (after.contains(*named) || isStillInstalled(*named))
            return *named;
        throw AndroidRuntimeError::commandFailed(
            QStringLiteral("Android has no app %1 after the installation; the file may be damaged, get it anew")
                .arg(*named));
    }
    const auto only = after.size() == 1 ? anyValidName(after) : std::nullopt;
    if (!only)
        throw AndroidRuntimeError::packageNameMissing();
    return *only;
}

void AppInstaller::requireLaunchable(const QString &package) const
{
    const auto answer = m_commands->runOnDevice(
        {QStringLiteral("shell"), QStringLiteral("cmd"), QStringLiteral("package"), QStringLiteral("resolve-activity"),
         QStringLiteral("--brief"), package});
    // An activity's line reads "{package}/{class}".
    if (!answer.contains(QLatin1Char('/')))
        throw AndroidRuntimeError::commandFailed(QStringLiteral("No launchable activity found for ") + package);
}

QString AppInstaller::packageIdentifier(const QString &apkPath) const
{
    // The name ends up in texts for the device's shell, and the file may come from anywhere: a name that Android
    // wouldn't accept counts as one that can't be read.
    const auto own = APKManifestReader::packageName(*m_commands->platform().archives, apkPath.toStdString());
    const auto name = QString::fromStdString(own.value_or(std::string()));
    if (isValidPackageName(name))
        return name;
    const auto answer = m_commands
                            ->run(
                                m_commands->paths().apkanalyzer(),
                                {QStringLiteral("manifest"), QStringLiteral("application-id"), apkPath})
                            .trimmed();
    if (!isValidPackageName(answer))
        throw AndroidRuntimeError::packageNameMissing();
    return answer;
}

} // namespace quillnest
