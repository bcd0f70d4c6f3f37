#pragma once

#include "device/Clipboard.h"
#include "device/DeviceTree.h"
#include "device/DisplayRegistry.h"
#include "device/FaultPlan.h"
#include "device/InstallSessions.h"
#include "device/Journal.h"
#include "device/NotificationStore.h"
#include "device/PackageStore.h"
#include "device/SettingsStore.h"

#include <atomic>

namespace standin
{

/// What the device is made of and what is known of it from the start.
struct DeviceIdentity {
    QString avdName;
    QString dataFolder; ///< on the host
    QString serial;
    QString abi;
    int api = 0;
};

/// The device: its parts, its properties and its boot. Parts lock for themselves; so everything here is thread safe.
class Device
{
public:
    explicit Device(DeviceIdentity identity);

    const DeviceIdentity identity;
    DeviceTree tree;
    FaultPlan faults;
    Journal journal;
    SettingsStore settings;
    PackageStore packages;
    DisplayRegistry displays;
    Clipboard clipboard;
    NotificationStore notifications;
    InstallSessions installs;

    /// The time from the start to the end of the boot, in seconds; a boot under way follows a change.
    void setBootSeconds(double seconds) { m_bootSeconds = seconds; }
    double bootSeconds() const { return m_bootSeconds; }
    bool isBooted() const;
    bool isPackageServiceSick() const { return faults.has(QStringLiteral("sick-package-service")); }

    /// System properties: built in, and those that were set since the start.
    QString property(const QString &name) const;
    QMap<QString, QString> properties() const;
    void setProperty(const QString &name, const QString &value);

    /// Ends the app and all that it shows: its task, notifications and sound.
    void forceStop(const QString &package);
    void setNight(bool night);
    QJsonObject stateAsJson() const;

private:
    const qint64 m_startedAt;
    std::atomic<double> m_bootSeconds = 1.5;
    mutable std::mutex m_mutex;
    QMap<QString, QString> m_properties;
};

} // namespace standin
