#pragma once

#include "stream/StreamSession.h"

#include <QRegularExpression>

namespace standin
{

/// The running stream servers. Thread safe.
class StreamSessions
{
public:
    explicit StreamSessions(StreamSession::Connect connect);

    /// Runs `app_process` to its end and returns its exit status.
    int run(Device &device, CommandIo &io);
    /// Ends every server whose command line matches; the number of them.
    int endMatching(const QRegularExpression &pattern);
    QStringList commandLines() const;
    QJsonArray toJson() const;

private:
    const StreamSession::Connect m_connect;
    mutable std::mutex m_mutex;
    QList<StreamSession *> m_sessions;
};

} // namespace standin
