#include "stream/StreamSessions.h"

#include <QFileInfo>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

const QString serverClass = u"com.genymobile.scrcpy.Server"_s;

} // namespace

StreamSessions::StreamSessions(StreamSession::Connect connect) : m_connect(std::move(connect)) { }

int StreamSessions::run(Device &device, CommandIo &io)
{
    const QStringList words = io.arguments();
    const bool found = !io.classPath().isEmpty() && QFileInfo(device.tree.hostPath(io.classPath())).isFile();
    if (words.value(1) != serverClass || !found) {
        io.error(u"Error: Could not find or load main class %1\nCaused by: java.lang.ClassNotFoundException: %1\n"
                 "Aborted\n"_s.arg(words.value(1)));
        return 1;
    }
    StreamOptions options;
    QString problem;
    if (!options.parse(words.mid(2), &problem)) {
        io.error(u"[server] ERROR: Exception on thread Thread[main,5,main]\n%1\n"_s.arg(problem));
        return 1;
    }
    if (!device.isBooted()) {
        io.error(u"[server] ERROR: Could not create display: the system is not running\n"_s);
        return 1;
    }
    StreamSession session(device, io, options, m_connect);
    {
        const std::lock_guard lock(m_mutex);
        m_sessions.append(&session);
    }
    const int status = session.run();
    const std::lock_guard lock(m_mutex);
    m_sessions.removeOne(&session);
    return status;
}

int StreamSessions::endMatching(const QRegularExpression &pattern)
{
    const std::lock_guard lock(m_mutex);
    int count = 0;
    for (StreamSession *session : qAsConst(m_sessions)) {
        if (pattern.match(session->commandLine()).hasMatch()) {
            session->end();
            ++count;
        }
    }
    return count;
}

QStringList StreamSessions::commandLines() const
{
    const std::lock_guard lock(m_mutex);
    QStringList lines;
    for (const StreamSession *session : m_sessions)
        lines.append(session->commandLine());
    return lines;
}

QJsonArray StreamSessions::toJson() const
{
    const std::lock_guard lock(m_mutex);
    QJsonArray sessions;
    for (const StreamSession *session : m_sessions)
        sessions.append(session->toJson());
    return sessions;
}

} // namespace standin
