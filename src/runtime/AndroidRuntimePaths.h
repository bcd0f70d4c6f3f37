#pragma once

#include <QString>

#include <optional>

namespace quillnest
{

struct Platform;

/// Where one installation of Android lies. A plain value; asked for afresh at every use and never kept, so that a
/// change of the selected version takes effect with the next command.
struct AndroidRuntimePaths {
    /// Root of the Android SDK layout.
    QString sdkRoot;
    /// Folder of the AVD definitions; absent means the emulator's own default, "~/.android/avd".
    std::optional<QString> avdHome;
    /// AVD to boot.
    QString avdName;
    /// Whether the program downloaded this installation and keeps it.
    bool isManaged = false;
    int api = 0;
    /// ABI of the system image, as it stands in paths: "arm64-v8a".
    QString imageAbi;

    /// Root of everything that the program downloads and keeps of Android.
    static QString managedRoot(const Platform &platform);
    /// The program's own installation of an Android version. All of them share one SDK and one AVD folder.
    static AndroidRuntimePaths managed(const Platform &platform, int api);
    /// The developer's SDK, which is always API 35, whichever version is selected.
    static AndroidRuntimePaths developerSDK(const Platform &platform);
    /// The installation in force. It need not be complete. Any thread.
    static AndroidRuntimePaths current(const Platform &platform);

    /// Whether the installation can boot: both tools, the system image and, where there is an AVD folder, the AVD.
    bool isComplete() const;

    QString systemImage() const;
    QString adb() const;
    QString emulator() const;
    QString apkanalyzer() const;

    bool operator==(const AndroidRuntimePaths &) const = default;
};

} // namespace quillnest
