#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

namespace quillnest
{

/// The facts, as opposed to the services, in which hosts differ.
struct HostProfile {
    /// What the user calls this kind of machine: "Mac", "PC".
    QString machineWord;
    /// What messages call the system that refuses something: "macOS", "The desktop". Begins a sentence.
    QString systemName;
    /// ABI of the system image that runs here at native speed, as it stands in paths and AVD files: "arm64-v8a".
    QString imageAbi;
    /// "hw.cpu.arch" of the AVD: "arm64".
    QString cpuArchitecture;
    /// What messages call machines of this kind where a download doesn't fit them: "Apple Silicon".
    QString processorName;
    /// "host-os" of the SDK archives that fit, and the ways in which the package lists spell "host-arch".
    QString sdkHostOs;
    QStringList sdkHostArchitectures;
    /// Folder of Google's SDK package lists, the one that the SDK manager reads. Ends with a slash.
    QUrl sdkRepository = QUrl(QStringLiteral("https://dl.google.com/android/repository/"));
    /// Where a developer's own Android SDK lies, relative to the home folder.
    QString developerSdk;
    /// AVD that a developer's SDK is expected to hold.
    QString developerAvdName;
    /// Where a Java home may lie, best first.
    QStringList javaHomes;
    /// Where a developer's machine keeps the stream client, beside which the server file lies.
    QString developmentScrcpy;

    static HostProfile appleSilicon();
    static HostProfile linuxX86_64();
};

} // namespace quillnest
