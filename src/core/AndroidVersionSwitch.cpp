#include "core/AndroidVersionSwitch.h"

#include "base/FireAndForget.h"
#include "runtime/AndroidRuntimeCLI.h"
#include "runtime/AndroidRuntimeProvisioner.h"
#include "runtime/AndroidVersions.h"
#include "runtime/DeviceTweaks.h"
#include "windows/AndroidWindowRegistry.h"

#include <QDir>
#include <QPointer>

namespace quillnest
{

AndroidVersionSwitch::AndroidVersionSwitch(const StoreServices &services, AndroidStatus &android, StatusLine &status)
    : m_services(services)
    , m_android(android)
    , m_status(status)
    , m_selected(AndroidVersions::selected(*services.platform.settings))
{
    services.runtime.tweaks().whenChanged(
        {RuntimeSettings::androidAPI.key()}, [self = QPointer<AndroidVersionSwitch>(this)] {
            if (self)
                self->follow();
        });
}

void AndroidVersionSwitch::follow()
{
    const int api = AndroidVersions::selected(*m_services.platform.settings);
    // One whose files are just being removed is arrived at when they have gone.
    if (m_switching || api == m_selected || m_beingRemoved.contains(api))
        return;
    leave(api);
    arrive(api);
}

void AndroidVersionSwitch::switchTo(int api)
{
    const auto &platform = m_services.platform;
    // The selected one passes if it isn't complete, so that this can start a repair.
    if (api == AndroidVersions::selected(*platform.settings)
        && AndroidRuntimePaths::managed(platform, api).isComplete())
        return;
    if (m_beingRemoved.contains(api)) {
        m_status.say(QStringLiteral("%1 is just being deleted").arg(AndroidVersions::name(api)));
        return;
    }
    m_switching = true;
    const auto failure = RuntimeSettings::androidAPI.set(*platform.settings, api);
    m_switching = false;
    if (failure) {
        m_status.say(QStringLiteral("Could not switch to %1: %2").arg(AndroidVersions::name(api), *failure));
        return;
    }
    leave(api);
    arrive(api);
}

void AndroidVersionSwitch::leave(int api)
{
    m_services.log->write(QStringLiteral("android version: switching to API %1").arg(api));
    m_services.windows.closeAll();
}

void AndroidVersionSwitch::arrive(int api)
{
    const auto &platform = m_services.platform;
    m_selected = AndroidVersions::selected(*platform.settings);
    m_services.provisioner.reset();
    m_services.windows.stopAndroid(QStringLiteral("Android version changed"), false);

    const bool complete = AndroidRuntimePaths::current(platform).isComplete();
    m_android.set(complete ? AndroidStatus::State::sleeping : AndroidStatus::State::notSetUp);
    const auto name = AndroidVersions::name(api);
    m_status.say(
        complete ? QStringLiteral("Switched to %1").arg(name)
                 : QStringLiteral("%1 needs a one-time download").arg(name));
    Q_EMIT switched();
}

void AndroidVersionSwitch::remove(int api)
{
    if (api != AndroidVersions::selected(*m_services.platform.settings) && !m_beingRemoved.contains(api))
        fireAndForget(m_services.log, removeFiles(api));
}

Task<> AndroidVersionSwitch::removeFiles(int api)
{
    const QPointer<AndroidVersionSwitch> self(this);
    m_beingRemoved.insert(api);
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
    m_beingRemoved.remove(api);
    m_services.log->write(QStringLiteral("android version: deleted API %1").arg(api));
    m_status.say(QStringLiteral("Deleted %1").arg(AndroidVersions::name(api)));
    // Somebody may have selected it by the settings alone.
    follow();
    Q_EMIT removed(api);
}

} // namespace quillnest
