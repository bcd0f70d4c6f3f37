#include "device/InstallSessions.h"

namespace standin
{

using namespace Qt::StringLiterals;

InstallSessions::InstallSessions(const DeviceTree &tree, PackageStore &packages)
    : m_tree(tree), m_packages(packages) { }

int InstallSessions::create(bool mayDowngrade)
{
    const std::lock_guard lock(m_mutex);
    auto folder = std::make_shared<QTemporaryDir>(m_tree.hostPath(u"/data/local/tmp"_s) + u"/session-XXXXXX"_s);
    m_sessions[++m_lastId] = {folder, {}, mayDowngrade};
    return m_lastId;
}

QString InstallSessions::nextFile(int session)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_sessions.find(session);
    if (found == m_sessions.end())
        return {};
    found->files.append(found->folder->filePath(u"%1.apk"_s.arg(found->files.size())));
    return found->files.last();
}

QString InstallSessions::commit(int session)
{
    Session taken;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_sessions.contains(session))
            return u"INSTALL_FAILED_INVALID_APK: unknown session %1"_s.arg(session);
        taken = m_sessions.take(session);
    }
    QStringList splits;
    QString base;
    for (const QString &file : taken.files) {
        QString problem;
        const std::optional<ApkInfo> info = ApkInfo::read(file, &problem);
        if (!info)
            return problem.arg(u"base.apk"_s);
        if (info->split.isEmpty())
            base = file;
        else
            splits.append(file);
    }
    if (base.isEmpty())
        return u"INSTALL_FAILED_INVALID_APK: Full install must include a base package"_s;
    return m_packages.install(base, u"base.apk"_s, taken.mayDowngrade, splits);
}

bool InstallSessions::abandon(int session)
{
    const std::lock_guard lock(m_mutex);
    return m_sessions.remove(session) > 0;
}

} // namespace standin
