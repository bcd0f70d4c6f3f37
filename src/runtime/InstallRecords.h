#pragma once

#include "platform/SettingsStore.h"

#include <QString>

#include <optional>

namespace quillnest
{

/// What is known to be installed from which file: one settings value for each APK, with the texts
/// "fingerprint" and "package". Any thread.
namespace InstallRecords
{
QString key(const QString &apkPath);

/// "{size}-{modification time}" of the file as it is now: bytes, or -1 if they can't be told, and seconds since 1970
/// as finely as the file system keeps them.
QString fingerprint(const QString &apkPath);

/// The package on record, whatever has become of the file since.
std::optional<QString> package(const SettingsStore &settings, const QString &apkPath);

/// The package on record if the record has this fingerprint.
std::optional<QString>
package(const SettingsStore &settings, const QString &apkPath, const QString &matchingFingerprint);

void write(SettingsStore &settings, const QString &apkPath, const QString &fingerprint, const QString &package);
} // namespace InstallRecords

} // namespace quillnest
