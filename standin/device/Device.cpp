#include "device/Device.h"

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

QMap<QString, QString> builtInProperties(const DeviceIdentity &identity)
{
    const QString device = identity.abi == u"arm64-v8a" ? u"emu64a"_s : u"emu64xa"_s;
    const QString product = identity.abi == u"arm64-v8a" ? u"sdk_gphone64_arm64"_s : u"sdk_gphone64_x86_64"_s;
    const QString api = QString::number(identity.api);
    const QString release = QString::number(qMax(1, identity.api - 20));
    return {
        {u"ro.product.name"_s, product},
        {u"ro.product.model"_s, product},
        {u"ro.product.device"_s, device},
        {u"ro.product.brand"_s, u"google"_s},
        {u"ro.product.manufacturer"_s, u"Google"_s},
        {u"ro.product.cpu.abi"_s, identity.abi},
        {u"ro.product.cpu.abilist"_s, identity.abi},
        {u"ro.product.locale"_s, u"en-US"_s},
        {u"ro.build.version.sdk"_s, api},
        {u"ro.build.version.release"_s, release},
        {u"ro.build.type"_s, u"userdebug"_s},
        {u"ro.build.characteristics"_s, u"emulator"_s},
        {u"ro.build.fingerprint"_s, u"google/%1/%2:%3/STANDIN/1:userdebug/dev-keys"_s.arg(product, device, release)},
        {u"ro.hardware"_s, u"ranchu"_s},
        {u"ro.kernel.qemu"_s, u"1"_s},
        {u"ro.boot.qemu.avd_name"_s, identity.avdName},
        {u"ro.serialno"_s, u"EMULATOR35X1X1X0"_s},
        {u"ro.sf.lcd_density"_s, u"420"_s},
        {u"persist.sys.timezone"_s, u"UTC"_s},
    };
}

} // namespace

Device::Device(DeviceIdentity who)
    : identity(std::move(who))
    , tree(identity.dataFolder + u"/tree"_s)
    , settings(identity.dataFolder + u"/settings.json"_s)
    , packages(tree, faults, identity.dataFolder + u"/packages.json"_s, identity.api)
    , displays(packages, settings.isNight())
    , installs(tree, packages)
    , m_startedAt(monotonicMilliseconds())
    , m_properties(builtInProperties(identity))
{
}

bool Device::isBooted() const
{
    const auto sinceStart = static_cast<double>(monotonicMilliseconds() - m_startedAt);
    return !faults.has(u"never-boots"_s) && sinceStart >= m_bootSeconds * 1000;
}

QString Device::property(const QString &name) const
{
    return properties().value(name);
}

QMap<QString, QString> Device::properties() const
{
    QMap<QString, QString> properties;
    {
        const std::lock_guard lock(m_mutex);
        properties = m_properties;
    }
    if (const auto api = faults.number(u"wrong-api"_s))
        properties[u"ro.build.version.sdk"_s] = QString::number(*api);
    if (isBooted()) {
        properties[u"sys.boot_completed"_s] = u"1"_s;
        properties[u"dev.bootcomplete"_s] = u"1"_s;
    }
    properties[u"init.svc.bootanim"_s] = isBooted() ? u"stopped"_s : u"running"_s;
    return properties;
}

void Device::setProperty(const QString &name, const QString &value)
{
    const std::lock_guard lock(m_mutex);
    m_properties[name] = value;
}

void Device::forceStop(const QString &package)
{
    displays.forceStop(package);
    notifications.cancelAll(package);
    notifications.setMedia(package, std::nullopt);
}

void Device::setNight(bool night)
{
    settings.set(u"persist"_s, u"night"_s, night ? u"yes"_s : u"no"_s);
    displays.setNight(night);
}

QJsonObject Device::stateAsJson() const
{
    QJsonObject state;
    state[u"booted"_s] = isBooted();
    state[u"bootSeconds"_s] = bootSeconds();
    state[u"api"_s] = identity.api;
    state[u"avd"_s] = identity.avdName;
    state[u"serial"_s] = identity.serial;
    QJsonObject installed;
    for (const InstalledPackage &package : packages.all()) {
        if (package.isSystem)
            continue;
        QJsonArray granted;
        for (const QString &permission : package.granted)
            granted.append(permission);
        installed[package.info.package] = QJsonObject{
            {u"label"_s, package.info.label},
            {u"path"_s, package.path},
            {u"activity"_s, package.info.activity},
            {u"versionCode"_s, package.info.versionCode},
            {u"versionName"_s, package.info.versionName},
            {u"granted"_s, granted}};
    }
    state[u"packages"_s] = installed;
    QJsonArray shown;
    for (const auto &display : displays.all()) {
        const ScreenModel model = display->model();
        QJsonArray tasks;
        for (const Task &task : displays.tasks()) {
            if (task.displayId == model.displayId)
                tasks.append(
                    QJsonObject{{u"package"_s, task.package}, {u"taskId"_s, task.id}, {u"depth"_s, task.depth}});
        }
        shown.append(QJsonObject{
            {u"displayId"_s, model.displayId},
            {u"width"_s, model.size.width()},
            {u"height"_s, model.size.height()},
            {u"dpi"_s, model.dpi},
            {u"text"_s, model.text},
            {u"scroll"_s, model.scroll},
            {u"running"_s, tasks},
            {u"package"_s, model.app ? model.app->package : QString()}});
    }
    state[u"displays"_s] = shown;
    state[u"clipboard"_s] = clipboard.text();
    state[u"clipboardSetByClient"_s] = clipboard.setByClientCount();
    state[u"notifications"_s] = notifications.notificationsAsJson();
    state[u"media"_s] = notifications.mediaAsJson();
    state[u"settings"_s] = settings.toJson();
    state[u"nightMode"_s] = settings.isNight();
    state[u"volume"_s] = QJsonObject{{u"3"_s, settings.volume(3)}, {u"5"_s, settings.volume(5)}};
    QJsonObject active;
    const QMap<QString, QString> all = faults.all();
    for (auto fault = all.begin(); fault != all.end(); ++fault)
        active[fault.key()] = *fault;
    state[u"faults"_s] = active;
    journal.writeTo(state);
    return state;
}

} // namespace standin
