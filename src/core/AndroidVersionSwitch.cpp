#include "core/AppLibraryStore.h"

#include "base/FireAndForget.h"
#include "runtime/AndroidRuntimePaths.h"
#include "runtime/AndroidVersions.h"
#include "runtime/RuntimeSettings.h"

#include <QDir>
#include <QPointer>

// Which Android version the apps run on, and the removal of another's files.

namespace quillnest
{

void AppLibraryStore::switchAndroidVersion(int api)
{
    const auto &platform = m_services.platform;
    // The selected one passes if it isn't complete, so that this can start a repair.
    if (api == AndroidVersions::selected(*platform.settings)
        && AndroidRuntimePaths::managed(platform, api).isComplete())
        return;
    m_services.log->write(QStringLiteral("android version: switching to API %1").arg(api));
    m_services.windows.closeAll();
    RuntimeSettings::androidAPI.set(*platform.settings, api);
    m_services.provisioner.reset();
    m_services.windows.stopAndroid(QStringLiteral("Android version changed"), false);

    const bool complete = AndroidRuntimePaths::current(platform).isComplete();
    setAndroidState(complete ? AndroidState::sleeping : AndroidState::notSetUp);
    const auto name = AndroidVersions::name(api);
    setStatus(
        complete ? QStringLiteral("Switched to %1").arg(name)
                 : QStringLiteral("%1 needs a one-time download").arg(name));
}

void AppLibraryStore::deleteAndroidVersion(int api)
{
    if (api != AndroidVersions::selected(*m_services.platform.settings))
        fireAndForget(m_services.log, removeVersion(api));
}

Task<> AppLibraryStore::removeVersion(int api)
{
    const QPointer<AppLibraryStore> self(this);
    auto remove = [paths = AndroidRuntimePaths::managed(m_services.platform, api)] {
        // What can't be removed stays, and the version counts as not installed all the same.
        QDir(QStringLiteral("%1/system-images/android-%2/default").arg(paths.sdkRoot).arg(paths.api))
            .removeRecursively();
        if (!paths.avdHome)
            return;
        const auto stem = *paths.avdHome + QLatin1Char('/') + paths.avdName;
        QDir(stem + QStringLiteral(".avd")).removeRecursively();
        QFile::remove(stem + QStringLiteral(".ini"));
    };
    auto removing = background(*m_services.platform.executor, std::move(remove));
    co_await removing;
    if (!self)
        co_return;
    m_services.log->write(QStringLiteral("android version: deleted API %1").arg(api));
    setStatus(QStringLiteral("Deleted %1").arg(AndroidVersions::name(api)));
}

} // namespace quillnest
