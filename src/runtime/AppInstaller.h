#pragma once

#include "runtime/AndroidCommands.h"

#include <QString>

#include <memory>
#include <mutex>
#include <optional>

namespace quillnest
{

/// Puts APKs on a device that is up. All calls block; any thread but the main one.
class AppInstaller
{
public:
    explicit AppInstaller(std::shared_ptr<const AndroidCommands> commands);

    /// Makes sure that the APK is installed and has an activity to launch; returns its package. Throws
    /// AndroidRuntimeError or LaunchError. A failure leaves what was installed on the device.
    QString install(const QString &apkPath) const;

    /// The package name of an APK file; throws AndroidRuntimeError or LaunchError.
    QString packageIdentifier(const QString &apkPath) const;

private:
    bool isStillInstalled(const QString &package) const;
    QString installedPackage(const QString &apkPath) const;
    void requireLaunchable(const QString &package) const;

    const std::shared_ptr<const AndroidCommands> m_commands;
    /// What is new on the device is this install's only while there is no other.
    mutable std::mutex m_installing;
};

} // namespace quillnest
