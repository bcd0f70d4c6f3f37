#pragma once

#include "core/StoreServices.h"
#include "core/StoredLibrary.h"

#include <QList>
#include <QUrl>

namespace quillnest
{

/// Adds package files to the library, in the order in which they were given, whatever is given meanwhile. Their labels
/// are read in the background. Main thread.
class AppImport : public QObject
{
    Q_OBJECT

public:
    AppImport(const StoreServices &services, StoredLibrary &library, StatusLine &status);

    void add(const QList<QUrl> &urls);

private:
    Task<> work();
    Task<> addPackage(QString path, MobilePlatform platform);

    const StoreServices &m_services;
    StoredLibrary &m_library;
    StatusLine &m_status;
    QList<QUrl> m_waiting;
    bool m_working = false;
};

} // namespace quillnest
