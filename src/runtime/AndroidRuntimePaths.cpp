#include "runtime/AndroidRuntimePaths.h"

#include "platform/Files.h"
#include "platform/Platform.h"
#include "runtime/AndroidVersions.h"
#include "runtime/RuntimeSettings.h"

namespace quillnest
{

QString AndroidRuntimePaths::managedRoot(const Platform &platform)
{
    return platform.folders.applicationSupport + QStringLiteral("/Quillnest/Runtime");
}

AndroidRuntimePaths AndroidRuntimePaths::managed(const Platform &platform, int api)
{
    const auto root = managedRoot(platform);
    return {
        .sdkRoot = root + QStringLiteral("/sdk"),
        .avdHome = root + QStringLiteral("/avd"),
        .avdName
        = api == AndroidVersions::defaultApi ? QStringLiteral("Quillnest") : QStringLiteral("Quillnest-%1").arg(api),
        .isManaged = true,
        .api = api,
        .imageAbi = platform.profile.imageAbi,
    };
}

AndroidRuntimePaths AndroidRuntimePaths::developerSDK(const Platform &platform)
{
    return {
        .sdkRoot = platform.folders.home + QLatin1Char('/') + platform.profile.developerSdk,
        .avdHome = std::nullopt,
        .avdName = platform.profile.developerAvdName,
        .isManaged = false,
        .api = AndroidVersions::defaultApi,
        .imageAbi = platform.profile.imageAbi,
    };
}

AndroidRuntimePaths AndroidRuntimePaths::current(const Platform &platform)
{
    const auto developer = developerSDK(platform);
    const auto &settings = *platform.settings;
    if (RuntimeSettings::useDeveloperSDK.value(settings) && developer.isComplete())
        return developer;
    const auto own = managed(platform, AndroidVersions::selected(settings));
    // A developer's SDK only ever holds the default API, so no other one falls back on it. Nobody asks whether it is
    // usable: with neither, its missing tools are what the user reads about.
    if (!own.isComplete() && own.api == AndroidVersions::defaultApi)
        return developer;
    return own;
}

bool AndroidRuntimePaths::isComplete() const
{
    if (!isExecutableFile(adb()) || !isExecutableFile(emulator()) || !QFileInfo::exists(systemImage()))
        return false;
    return !avdHome || QFileInfo::exists(*avdHome + QLatin1Char('/') + avdName + QStringLiteral(".ini"));
}

QString AndroidRuntimePaths::systemImage() const
{
    return QStringLiteral("%1/system-images/android-%2/default/%3/system.img")
        .arg(sdkRoot, QString::number(api), imageAbi);
}

QString AndroidRuntimePaths::adb() const
{
    return sdkRoot + QStringLiteral("/platform-tools/adb");
}

QString AndroidRuntimePaths::emulator() const
{
    return sdkRoot + QStringLiteral("/emulator/emulator");
}

QString AndroidRuntimePaths::apkanalyzer() const
{
    return sdkRoot + QStringLiteral("/cmdline-tools/latest/bin/apkanalyzer");
}

} // namespace quillnest
