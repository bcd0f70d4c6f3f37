#pragma once

#include "core/StoreServices.h"
#include "core/StoredLibrary.h"

#include <QList>
#include <QUrl>

#include <map>

namespace quillnest
{

/// Adds package files to the library, in the order in which they were given, whatever is given meanwhile. Their labels
/// are read in the background. A file of a package that is in the library already takes the place of that entry's file.
/// Main thread.
class AppImport : public QObject
{
    Q_OBJECT

public:
    AppImport(const StoreServices &services, StoredLibrary &library, StatusLine &status);

    void add(const QList<QUrl> &urls);

private:
    Task<> work();
    Task<> addPackage(QString path, MobilePlatform platform);
    QStringList filesOfUnknownPackages() const;
    /// The entry of the same package as a file's.
    std::optional<MobileApp> withPackageOf(const QString &path) const;

    const StoreServices &m_services;
    StoredLibrary &m_library;
    StatusLine &m_status;
    QList<QUrl> m_waiting;
    /// The package names in the manifests that were read so far, by file; empty where there is none.
    std::map<QString, QString> m_packages;
    bool m_working = false;
};

} // namespace quillnest
