#include "device/PackageStore.h"

#include "common/JsonFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QRandomGenerator>
#include <QRegularExpression>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

QString randomName()
{
    QByteArray bytes(16, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = static_cast<char>(QRandomGenerator::system()->bounded(256));
    return QString::fromLatin1(bytes.toBase64(QByteArray::Base64UrlEncoding));
}

bool isPackageName(const QString &name)
{
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(u"[A-Za-z][A-Za-z0-9_]*(\\.[A-Za-z][A-Za-z0-9_]*)+"_s));
    return pattern.match(name).hasMatch();
}

/// The folder made for one installation: "/data/app/~~random", two levels above the APK.
QDir installationFolder(const QString &apk)
{
    return QDir(QDir::cleanPath(apk + u"/../.."_s));
}

} // namespace

PackageStore::PackageStore(const DeviceTree &tree, const FaultPlan &faults, QString file, int api)
    : m_tree(tree), m_faults(faults), m_file(std::move(file)), m_api(api)
{
    addSystemPackages();
    load();
}

QString PackageStore::install(
    const QString &hostFile, const QString &shownPath, bool mayDowngrade, const QStringList &hostSplits)
{
    const std::lock_guard installing(m_installMutex);
    QString problem;
    const std::optional<ApkInfo> info = ApkInfo::read(hostFile, &problem);
    if (!info)
        return problem.arg(shownPath);
    const bool mayHaveAnyName = m_faults.has(u"any-package-name"_s) && !info->package.contains(u".."_s);
    if (!isPackageName(info->package) && !mayHaveAnyName) {
        return u"INSTALL_PARSE_FAILED_BAD_PACKAGE_NAME: Failed to parse %1: Invalid manifest package %2"_s.arg(
            shownPath, info->package);
    }
    if (info->minSdk > m_api) {
        return u"INSTALL_FAILED_OLDER_SDK: Requires newer sdk version #%1 (current version is #%2)"_s.arg(info->minSdk)
            .arg(m_api);
    }
    const std::optional<InstalledPackage> old = find(info->package);
    if (old && old->isSystem)
        return u"INSTALL_FAILED_UPDATE_INCOMPATIBLE: Package %1 is part of the system"_s.arg(info->package);
    if (old && info->versionCode < old->info.versionCode && !mayDowngrade) {
        return u"INSTALL_FAILED_VERSION_DOWNGRADE: Downgrade detected: Update version code %1 is older than current %2"_s
            .arg(info->versionCode)
            .arg(old->info.versionCode);
    }
    InstalledPackage package;
    package.info = *info;
    package.path = u"/data/app/~~%1/%2-%3/base.apk"_s.arg(randomName(), info->package, randomName());
    package.updated = QDateTime::currentDateTime();
    package.firstInstalled = old ? old->firstInstalled : package.updated;
    if (old)
        package.granted = old->granted;
    const QString file = m_tree.hostPath(package.path);
    if (!QDir().mkpath(QFileInfo(file).path()) || !QFile::copy(hostFile, file))
        return u"INSTALL_FAILED_INSUFFICIENT_STORAGE: Failed to copy the package"_s;
    for (const QString &split : hostSplits) {
        const QString path = package.path.chopped(8) + u"split_%1.apk"_s.arg(package.splits.size()); // beside base.apk
        if (!QFile::copy(split, m_tree.hostPath(path)))
            return u"INSTALL_FAILED_INSUFFICIENT_STORAGE: Failed to copy the package"_s;
        package.splits.append(path);
    }
    QFile::setPermissions(file, QFile::permissions(file) | QFile::ReadGroup | QFile::ReadOther);
    package.icon = info->icon(file);
    QDir().mkpath(m_tree.hostPath(u"/data/data/"_s + info->package + u"/files"_s));
    insert(package);
    if (old)
        installationFolder(m_tree.hostPath(old->path)).removeRecursively();
    return {};
}

bool PackageStore::uninstall(const QString &package)
{
    const std::optional<InstalledPackage> old = find(package);
    if (!old || old->isSystem)
        return false;
    {
        const std::lock_guard lock(m_mutex);
        m_packages.remove(package);
        save();
    }
    installationFolder(m_tree.hostPath(old->path)).removeRecursively();
    QDir(m_tree.hostPath(u"/data/data/"_s + package)).removeRecursively();
    return true;
}

std::optional<InstalledPackage> PackageStore::find(const QString &package) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_packages.constFind(package);
    return found == m_packages.constEnd() ? std::nullopt : std::optional(*found);
}

QList<InstalledPackage> PackageStore::all() const
{
    const std::lock_guard lock(m_mutex);
    return m_packages.values();
}

bool PackageStore::setGranted(const QString &package, const QString &permission, bool granted)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_packages.find(package);
    if (found == m_packages.end())
        return false;
    if (granted)
        found->granted.insert(permission);
    else
        found->granted.remove(permission);
    save();
    return true;
}

void PackageStore::addSystemPackages()
{
    const auto add = [this](const QString &name, const QString &label, const QString &path, const QString &activity) {
        InstalledPackage package;
        package.info.package = name;
        package.info.label = label;
        package.info.activity = activity;
        package.info.versionCode = m_api;
        package.info.versionName = QString::number(m_api - 20);
        package.path = path;
        package.isSystem = true;
        m_packages[name] = package;
    };
    add(u"android"_s, u"Android System"_s, u"/system/framework/framework-res.apk"_s, {});
    add(u"com.android.launcher3"_s, u"Launcher"_s, u"/system_ext/priv-app/Launcher3QuickStep/Launcher3QuickStep.apk"_s,
        u"com.android.launcher3.uioverrides.QuickstepLauncher"_s);
    add(u"com.android.settings"_s, u"Settings"_s, u"/system_ext/priv-app/Settings/Settings.apk"_s,
        u"com.android.settings.Settings"_s);
    add(u"com.android.systemui"_s, u"System UI"_s, u"/system_ext/priv-app/SystemUI/SystemUI.apk"_s, {});
}

void PackageStore::load()
{
    const QJsonObject packages = readJsonFile(m_file);
    for (auto entry = packages.begin(); entry != packages.end(); ++entry) {
        const QJsonObject kept = entry->toObject();
        InstalledPackage package;
        package.path = kept[u"path"].toString();
        package.firstInstalled = QDateTime::fromString(kept[u"firstInstalled"].toString(), Qt::ISODate);
        package.updated = QDateTime::fromString(kept[u"updated"].toString(), Qt::ISODate);
        package.info.package = entry.key();
        package.info.label = kept[u"label"].toString();
        package.info.activity = kept[u"activity"].toString();
        package.info.versionName = kept[u"versionName"].toString();
        package.info.versionCode = kept[u"versionCode"].toInteger();
        package.info.minSdk = kept[u"minSdk"].toInt();
        package.info.iconEntry = kept[u"icon"].toString();
        for (const QJsonValue &permission : kept[u"granted"].toArray())
            package.granted.insert(permission.toString());
        for (const QJsonValue &split : kept[u"splits"].toArray())
            package.splits.append(split.toString());
        const QString file = m_tree.hostPath(package.path);
        if (!QFileInfo::exists(file))
            continue; // the tree was emptied by hand
        package.icon = package.info.icon(file);
        m_packages[entry.key()] = package;
    }
}

void PackageStore::save() const
{
    QJsonObject packages;
    for (const InstalledPackage &package : m_packages) {
        if (package.isSystem)
            continue;
        QJsonArray granted;
        for (const QString &permission : package.granted)
            granted.append(permission);
        packages[package.info.package] = QJsonObject{
            {u"path"_s, package.path},
            {u"firstInstalled"_s, package.firstInstalled.toString(Qt::ISODate)},
            {u"updated"_s, package.updated.toString(Qt::ISODate)},
            {u"label"_s, package.info.label},
            {u"activity"_s, package.info.activity},
            {u"versionName"_s, package.info.versionName},
            {u"versionCode"_s, package.info.versionCode},
            {u"minSdk"_s, package.info.minSdk},
            {u"icon"_s, package.info.iconEntry},
            {u"granted"_s, granted},
            {u"splits"_s, QJsonArray::fromStringList(package.splits)},
        };
    }
    writeJsonFile(m_file, packages);
}

void PackageStore::insert(const InstalledPackage &package)
{
    const std::lock_guard lock(m_mutex);
    m_packages[package.info.package] = package;
    save();
}

} // namespace standin
