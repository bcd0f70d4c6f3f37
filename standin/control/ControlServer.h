#pragma once

#include "common/UniqueFd.h"
#include "device/Device.h"
#include "stream/StreamSessions.h"

#include <functional>

namespace standin
{

/// The device seen and moved from outside: one request per line as a JSON object with "cmd", one answer per line
/// with "ok" and either the result or "error". The README lists the commands.
class ControlServer
{
public:
    ControlServer(Device &device, StreamSessions &sessions, std::function<void()> quit);
    bool start(const QString &path);

private:
    void serve(const UniqueFd &connection);
    QJsonObject answer(const QJsonObject &request);
    /// What an app would show outside of its window: notifications and what it plays.
    QJsonObject mirror(const QString &command, const QJsonObject &request);
    QJsonObject set(const QString &name, const QString &value);
    QJsonObject fault(const QString &name, const QString &argument);
    QJsonObject screenshot(int displayId) const;

    Device &m_device;
    StreamSessions &m_sessions;
    const std::function<void()> m_quit;
    UniqueFd m_listener;
};

} // namespace standin
