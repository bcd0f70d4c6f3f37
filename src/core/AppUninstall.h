#pragma once

#include "core/StoreServices.h"
#include "core/StoredLibrary.h"

namespace quillnest
{

/// Takes one app from the device, and with it the entry, its records and what the program keeps of it. Main thread.
class AppUninstall : public QObject
{
    Q_OBJECT

public:
    AppUninstall(const StoreServices &services, StoredLibrary &library, StatusLine &status);

    /// Asks the user first.
    void confirm(const MobileApp &app);

private:
    void start(const MobileApp &app);
    Task<> run(MobileApp app, QString package);

    const StoreServices &m_services;
    StoredLibrary &m_library;
    StatusLine &m_status;
};

} // namespace quillnest
