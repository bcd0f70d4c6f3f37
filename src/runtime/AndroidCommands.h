#pragma once

#include "base/QuillnestLog.h"
#include "platform/Platform.h"
#include "runtime/AndroidRuntimePaths.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace quillnest
{

/// Runs the command-line tools of the Android SDK and reads what they print. All calls block until the tool ends, so
/// they belong on any thread but the main one; none has a time-out. Immutable and safe from several threads at once.
///
/// Work that may outlive `AndroidRuntimeCLI` holds this object by its shared pointer.
class AndroidCommands
{
public:
    AndroidCommands(const Platform &platform, std::shared_ptr<QuillnestLog> log);

    const Platform &platform() const { return m_platform; }
    QuillnestLog &log() const { return *m_log; }
    const std::shared_ptr<QuillnestLog> &sharedLog() const { return m_log; }

    /// The one device that is ever addressed, and its console port.
    static QString serial() { return QStringLiteral("emulator-5556"); }
    static QString consolePort() { return QStringLiteral("5556"); }

    /// The installation in force right now, with the tools' paths.
    AndroidRuntimePaths paths() const { return AndroidRuntimePaths::current(m_platform); }

    /// Runs a tool and returns all that it printed, untrimmed, standard error included. Throws AndroidRuntimeError for
    /// a missing tool and for an exit status other than 0, LaunchError when the tool can't be started, and
    /// std::system_error when its output can't be flushed to disk.
    QString run(const QString &tool, const QStringList &arguments) const;

    /// `run` of adb with `arguments` on the device.
    QString runOnDevice(const QStringList &arguments) const;

    /// The quick road for commands whose failure doesn't matter: adb on the device, its standard output, or "" for
    /// any failure. The exit status is ignored.
    QString runADB(const QStringList &arguments) const;

    /// The Java home that `run` gives its tools, if one is found.
    std::optional<QString> javaHome() const;

    /// Whose device is on our port. Nobody's is one whose console says no name, or not yet; a silent one would have
    /// taken longer than a command may.
    enum class Whose { nobodys, silent, ours, anothers };
    /// The AVD's name, in the emulator's own words, tells. Throws AndroidRuntimeError when another user has adb's port,
    /// for then nothing that adb says can be believed.
    Whose whoseDevice() const;

    /// Whether adb lists the device; throws as `run` does, and a command that failed is no answer.
    bool deviceIsListed() const;

    /// Whether the device has booted and is ours; any failure answers false, as below.
    bool deviceIsBooted() const;
    bool androidIsHealthy() const;
    bool internetIsValidated() const;

    /// API level of the running device; 0 when it can't be told.
    int runningApi() const;

    /// Tells the device to end; failures are ignored.
    void killDevice() const;

    /// Stops all apps and tells the device to end, if it is ours.
    void stopDevice() const;

    /// The same for somebody who can't wait, within about eight seconds: a device that doesn't answer is ended by its
    /// process.
    void stopDeviceAtOnce() const;

    /// Force-stops every app that isn't part of the system image.
    void stopAllApps() const;

    /// The packages that aren't part of the system image; throws as `run` does.
    QSet<QString> thirdPartyPackages() const;

private:
    ChildResult runDeviceCommand(const QStringList &arguments) const;
    void requireOwnServer() const;
    QStringList ourAVDs() const;
    Whose whoseToStop() const;

    const Platform m_platform;
    const std::shared_ptr<QuillnestLog> m_log;
    /// Of each command; none for as long as it takes.
    std::optional<std::chrono::milliseconds> m_limit;
};

} // namespace quillnest
