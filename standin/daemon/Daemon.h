#pragma once

#include "daemon/AdbTransport.h"
#include "device/Device.h"

namespace standin
{

/// The device's debug daemon: accepts adb servers on its port, and knows the way back to the host.
class Daemon
{
public:
    explicit Daemon(Device &device);

    /// False when the port is taken.
    bool start(quint16 port);
    /// Follows a reverse tunnel from the device's socket of that name; empty when there is none.
    std::shared_ptr<AdbStream> connectAbstract(const QByteArray &name);

private:
    void serve(UniqueFd connection);
    AdbTransport::Service serviceFor(const std::shared_ptr<AdbTransport> &transport, const QByteArray &name);
    QByteArray banner() const;

    Device &m_device;
    UniqueFd m_listener;
    std::mutex m_mutex;
    std::vector<std::weak_ptr<AdbTransport>> m_transports;
};

} // namespace standin
