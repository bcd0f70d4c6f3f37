#pragma once

#include "platform/Tasks.h"
#include "runtime/AndroidCommands.h"

#include <QString>

#include <memory>
#include <optional>

namespace quillnest
{

class AppInstaller;
class DeviceTweaks;
class EmulatorBoot;

/// The only road to the device for the boot and for installs. Made once and destroyed on the main thread.
///
/// Functions that return a Task are for the main thread. All others block for a tool and are for the background; work
/// that may outlive this object uses `commands()` in its place. When the object goes, pending tasks end with
/// AndroidRuntimeCancelled at their next step.
class AndroidRuntimeCLI
{
public:
    AndroidRuntimeCLI(const Platform &platform, std::shared_ptr<QuillnestLog> log);
    ~AndroidRuntimeCLI();
    AndroidRuntimeCLI(const AndroidRuntimeCLI &) = delete;
    AndroidRuntimeCLI &operator=(const AndroidRuntimeCLI &) = delete;

    /// The command runner, to be held by background work.
    std::shared_ptr<const AndroidCommands> commands() const { return m_commands; }

    /// What a device is to be like that has become ready; features add to it before the start.
    DeviceTweaks &tweaks() const { return *m_tweaks; }

    /// On return a device is up, booted, healthy and on the selected API, whether it was running already or was started
    /// now. All callers share the one boot in flight, and its failure: AndroidRuntimeError or LaunchError.
    Task<> ensureRuntime();

    /// Ends the emulator that this process has just started, if nothing else can reach it yet. Main thread.
    void endUnfinishedBoot() const;

    /// Makes sure that an APK is installed and can be launched; returns its package name. Repeats for an unchanged file
    /// cost one look at the device. Throws AndroidRuntimeError or what `ensureRuntime` throws.
    Task<QString> installAndLaunch(QString apkPath);

    /// The package name of an APK file; throws AndroidRuntimeError. A name that is no valid package name counts as
    /// unreadable.
    QString packageIdentifier(const QString &apkPath) const;

    /// The package that was last installed from a path, whether or not the file has changed since. Any thread.
    std::optional<QString> knownPackage(const QString &apkPath) const;

    /// Notes that the file, as it is now, is installed as `package`. Any thread.
    void rememberInstalled(const QString &apkPath, const QString &package) const;

private:
    const std::shared_ptr<const AndroidCommands> m_commands;
    const std::unique_ptr<DeviceTweaks> m_tweaks;
    const std::shared_ptr<EmulatorBoot> m_boot;
    const std::shared_ptr<const AppInstaller> m_installer;
};

} // namespace quillnest
