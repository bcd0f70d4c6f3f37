#pragma once

#include "device/ApkInfo.h"
#include "device/DeviceTree.h"
#include "device/FaultPlan.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QSet>
#include <memory>
#include <mutex>

namespace standin
{

/// One installed package. A value; the icon is decoded once and shared.
struct InstalledPackage {
    ApkInfo info;
    QString path; ///< of the APK, as the device sees it
    QStringList splits; ///< paths of the further files
    QDateTime firstInstalled;
    QDateTime updated;
    QSet<QString> granted;
    bool isSystem = false;
    QImage icon;
};

/// The installed packages and their files in the tree; on disk after every change. Thread safe.
class PackageStore
{
public:
    PackageStore(const DeviceTree &tree, const FaultPlan &faults, QString file, int api);

    /// Installs the file at the host's path, named `shownPath` in messages. Empty on success, otherwise what stands
    /// in the brackets behind "Failure".
    QString
    install(const QString &hostFile, const QString &shownPath, bool mayDowngrade, const QStringList &hostSplits = {});
    bool uninstall(const QString &package);
    std::optional<InstalledPackage> find(const QString &package) const;
    QList<InstalledPackage> all() const;
    bool setGranted(const QString &package, const QString &permission, bool granted);

private:
    void addSystemPackages();
    void load();
    void save() const;
    void insert(const InstalledPackage &package);

    const DeviceTree &m_tree;
    const FaultPlan &m_faults;
    const QString m_file;
    const int m_api;
    mutable std::mutex m_mutex;
    std::mutex m_installMutex; // one install at a time; it runs programs, so the other lock is not held meanwhile
    QMap<QString, InstalledPackage> m_packages;
};

} // namespace standin
