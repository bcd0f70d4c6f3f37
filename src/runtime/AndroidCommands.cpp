#include "runtime/AndroidCommands.h"

#include "base/MobileApp.h"
#include "base/StrictUtf8.h"
#include "platform/Files.h"
#include "platform/LeftOverProcesses.h"
#include "runtime/AndroidRuntimeError.h"
#include "runtime/AndroidVersions.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace quillnest
{

namespace
{
/// A new empty file that a child writes to. It has lost its name at once, so nothing stays of it however this ends.
class CommandOutput
{
public:
    explicit CommandOutput(const QString &folder)
        : m_file(QStringLiteral("%1/Quillnest-command-%2.log").arg(folder, uuidText(QUuid::createUuid())))
    {
        // What tools say is nobody else's business, in a folder that all users share.
        if (!m_file.open(
                QIODevice::ReadWrite | QIODevice::NewOnly | QIODevice::Unbuffered,
                QFileDevice::ReadOwner | QFileDevice::WriteOwner))
            throw AndroidRuntimeError::commandFailed(QStringLiteral("Could not create command output"));
        QFile::remove(m_file.fileName());
    }

    int descriptor() const { return m_file.handle(); }

    void synchronize() const { quillnest::synchronize(m_file); }

    /// What the child wrote; "" if it can't be read or isn't UTF-8.
    QString text()
    {
        if (!m_file.seek(0))
            return {};
        return strictUtf8(m_file.readAll()).value_or(QString());
    }

private:
    QFile m_file;
};

QStringList onDevice(const QStringList &arguments)
{
    return QStringList{QStringLiteral("-s"), AndroidCommands::serial()} + arguments;
}

QStringList nonEmptyLines(const QString &text)
{
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

/// Where the emulator's debug daemon listens, beside its console.
constexpr std::uint16_t daemonPort = 5557;

/// Where adb looks for its server.
std::uint16_t serverPort()
{
    constexpr int usual = 5037;
    bool good = false;
    const int port = qEnvironmentVariableIntValue("ANDROID_ADB_SERVER_PORT", &good);
    return static_cast<std::uint16_t>(good ? port : usual);
}
} // namespace

AndroidCommands::AndroidCommands(const Platform &platform, std::shared_ptr<QuillnestLog> log)
    : m_platform(platform), m_log(std::move(log))
{
}

QString AndroidCommands::run(const QString &tool, const QStringList &arguments) const
{
    if (!isExecutableFile(tool))
        throw AndroidRuntimeError::toolMissing(QFileInfo(tool).fileName());
    requireOwnServer();

    CommandOutput output(m_platform.folders.temporary);
    ChildCommand command;
    command.program = tool;
    command.arguments = arguments;
    if (const auto home = javaHome())
        command.environment[QStringLiteral("JAVA_HOME")] = *home;
    command.input = ChildCommand::Input::null;
    command.output = ChildCommand::Output::descriptor;
    command.errors = ChildCommand::Errors::merged;
    command.descriptor = output.descriptor();
    command.limit = m_limit;
    const auto result = m_platform.processes->run(command);
    if (result.launchError)
        throw LaunchError(*result.launchError);
    output.synchronize();
    auto text = output.text();
    if (result.status != 0)
        throw AndroidRuntimeError::commandFailed(text.trimmed());
    return text;
}

QString AndroidCommands::runOnDevice(const QStringList &arguments) const
{
    return run(paths().adb(), onDevice(arguments));
}

ChildResult AndroidCommands::runDeviceCommand(const QStringList &arguments) const
{
    ChildCommand command;
    command.program = paths().adb();
    command.arguments = onDevice(arguments);
    command.input = ChildCommand::Input::inherit;
    command.output = ChildCommand::Output::pipe;
    command.errors = ChildCommand::Errors::null;
    command.limit = m_limit;
    return m_platform.processes->run(command);
}

QString AndroidCommands::runADB(const QStringList &arguments) const
{
    if (m_platform.sockets->listenerOwner(serverPort()) == SocketOwner::another)
        return {};
    const auto result = runDeviceCommand(arguments);
    if (result.launchError)
        return {};
    return strictUtf8(result.output).value_or(QString());
}

void AndroidCommands::requireOwnServer() const
{
    if (m_platform.sockets->listenerOwner(serverPort()) == SocketOwner::another)
        throw AndroidRuntimeError::serverOfAnother(serverPort());
}

std::optional<QString> AndroidCommands::javaHome() const
{
    for (const auto &home : m_platform.profile.javaHomes) {
        if (QFileInfo::exists(home + QStringLiteral("/bin/java")))
            return home;
    }
    return std::nullopt;
}

QStringList AndroidCommands::ourAVDs() const
{
    QStringList names{AndroidRuntimePaths::developerSDK(m_platform).avdName};
    for (const auto &version : AndroidVersions::all)
        names += AndroidRuntimePaths::managed(m_platform, version.api).avdName;
    return names;
}

AndroidCommands::Whose AndroidCommands::whoseDevice() const
{
    requireOwnServer();
    for (const auto port : {consolePort().toUShort(), daemonPort}) {
        if (m_platform.sockets->listenerOwner(port) == SocketOwner::another)
            return Whose::anothers;
    }
    const auto result = runDeviceCommand({QStringLiteral("emu"), QStringLiteral("avd"), QStringLiteral("name")});
    if (result.tookTooLong)
        return Whose::silent;
    // The name, and a line that says that this was all.
    const auto lines = nonEmptyLines(strictUtf8(result.output).value_or(QString()));
    if (lines.size() < 2 || lines.last().trimmed() != QLatin1String("OK"))
        return Whose::nobodys;
    return ourAVDs().contains(lines.first().trimmed()) ? Whose::ours : Whose::anothers;
}

bool AndroidCommands::deviceIsListed() const
{
    const auto lines = nonEmptyLines(run(paths().adb(), {QStringLiteral("devices")}));
    return std::any_of(lines.begin(), lines.end(), [](const QString &line) { return line.startsWith(serial()); });
}

bool AndroidCommands::deviceIsBooted() const
{
    try {
        const QStringList query{
            QStringLiteral("shell"), QStringLiteral("getprop"), QStringLiteral("sys.boot_completed")};
        return runOnDevice(query).trimmed() == QLatin1String("1") && whoseDevice() == Whose::ours;
    } catch (const std::exception &) {
        return false;
    }
}

bool AndroidCommands::androidIsHealthy() const
{
    try {
        const auto answer = runOnDevice(
            {QStringLiteral("shell"), QStringLiteral("service"), QStringLiteral("check"), QStringLiteral("package")});
        return answer.contains(QLatin1String("found")) && !answer.contains(QLatin1String("not found"));
    } catch (const std::exception &) {
        return false;
    }
}

bool AndroidCommands::internetIsValidated() const
{
    try {
        return runOnDevice({QStringLiteral("shell"), QStringLiteral("dumpsys"), QStringLiteral("connectivity")})
            .contains(QLatin1String("VALIDATED"));
    } catch (const std::exception &) {
        return false;
    }
}

int AndroidCommands::runningApi() const
{
    try {
        const QStringList query{
            QStringLiteral("shell"), QStringLiteral("getprop"), QStringLiteral("ro.build.version.sdk")};
        return runOnDevice(query).trimmed().toInt();
    } catch (const std::exception &) {
        return 0;
    }
}

void AndroidCommands::killDevice() const
{
    try {
        runOnDevice({QStringLiteral("emu"), QStringLiteral("kill")});
    } catch (const std::exception &) {
        // Whether it went is seen in the list of devices.
    }
}

AndroidCommands::Whose AndroidCommands::whoseToStop() const
{
    try {
        const auto whose = whoseDevice();
        if (whose == Whose::anothers)
            log().write(
                QStringLiteral("the device on port %1 is somebody else's and is left alone").arg(consolePort()));
        return whose;
    } catch (const AndroidRuntimeError &) {
        // Of another user's adb nothing is asked.
        return Whose::nobodys;
    }
}

void AndroidCommands::stopDevice() const
{
    if (whoseToStop() != Whose::ours)
        return;
    stopAllApps();
    runADB({QStringLiteral("emu"), QStringLiteral("kill")});
}

void AndroidCommands::stopDeviceAtOnce() const
{
    auto quick = *this;
    quick.m_limit = std::chrono::milliseconds(2500);
    const auto whose = quick.whoseToStop();
    bool isSilent = whose == Whose::silent;
    if (whose == Whose::ours) {
        quick.stopAllApps();
        const auto killed = quick.runDeviceCommand({QStringLiteral("emu"), QStringLiteral("kill")});
        if (killed.status == 0 && !killed.tookTooLong)
            return;
        isSilent = killed.tookTooLong;
    }
    const auto ending = isSilent ? Ending::byForce : Ending::asked;
    if (ending == Ending::byForce)
        log().write(QStringLiteral("Android does not answer - ending its process"));
    // One of ours may be there all the same: on its way up, without a console, or beside somebody else's.
    endLeftOverProcesses(
        *m_platform.processes,
        {QStringLiteral("@Quillnest"), QStringLiteral(" -port %1 -no-window -no-boot-anim").arg(consolePort())},
        ending);
}

void AndroidCommands::stopAllApps() const
{
    const auto stopped = nonEmptyLines(runADB(
        {QStringLiteral("shell"),
         QStringLiteral("for p in $(pm list packages -3 | sed 's/package://'); do am force-stop $p; echo $p; done")}));
    if (!stopped.isEmpty())
        log().write(QStringLiteral("stopped %1 Android apps").arg(stopped.size()));
}

QSet<QString> AndroidCommands::thirdPartyPackages() const
{
    const auto prefix = QStringLiteral("package:");
    QSet<QString> packages;
    const auto output = runOnDevice(
        {QStringLiteral("shell"), QStringLiteral("pm"), QStringLiteral("list"), QStringLiteral("packages"),
         QStringLiteral("-3")});
    for (const auto &line : nonEmptyLines(output)) {
        const auto trimmed = line.trimmed();
        if (trimmed.startsWith(prefix))
            packages.insert(trimmed.mid(prefix.size()));
    }
    return packages;
}

} // namespace quillnest
