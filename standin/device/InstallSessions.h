#pragma once

#include "device/PackageStore.h"

#include <QTemporaryDir>

namespace standin
{

/// Installs of several files: created, given their files one by one, and committed at once. Thread safe.
class InstallSessions
{
public:
    InstallSessions(const DeviceTree &tree, PackageStore &packages);

    int create(bool mayDowngrade);
    /// The host's path for the session's next file; empty for an unknown session.
    QString nextFile(int session);
    /// As PackageStore::install. The session ends either way.
    QString commit(int session);
    bool abandon(int session);

private:
    struct Session {
        std::shared_ptr<QTemporaryDir> folder;
        QStringList files;
        bool mayDowngrade = false;
    };

    const DeviceTree &m_tree;
    PackageStore &m_packages;
    std::mutex m_mutex;
    QMap<int, Session> m_sessions;
    int m_lastId = 1000;
};

} // namespace standin
