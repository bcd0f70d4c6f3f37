#pragma once

#include "common/UniqueFd.h"
#include "daemon/AdbPacket.h"
#include "daemon/AdbStream.h"
#include "daemon/ReverseTable.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

namespace standin
{

/// One connection of an adb server to the device, and the streams that it carries. `run` is the reader and stays on
/// its caller's thread; every service gets a thread of its own, since services block as they please.
class AdbTransport : public std::enable_shared_from_this<AdbTransport>
{
public:
    /// Handles one opened service to its end. False, at once, when there is no such service.
    using Service = std::function<void(const std::shared_ptr<AdbStream> &)>;
    using Router = std::function<Service(const std::shared_ptr<AdbTransport> &, const QByteArray &name)>;

    AdbTransport(UniqueFd socket, QByteArray banner, Router router);

    void run();
    bool send(const AdbPacket &packet);
    /// Opens a connection from the device to the host; empty when the host refuses or does not answer in 10 seconds.
    std::shared_ptr<AdbStream> open(const QByteArray &destination);
    void forget(quint32 localId);
    quint32 maxPayload() const { return m_maxPayload; }
    ReverseTable &reverses() { return m_reverses; }

private:
    void handle(AdbPacket packet);
    void handleOpen(const AdbPacket &packet);
    std::shared_ptr<AdbStream> addStream(quint32 remoteId);
    std::shared_ptr<AdbStream> stream(quint32 localId);
    void closeEverything();

    const UniqueFd m_socket;
    const QByteArray m_banner;
    const Router m_router;
    std::atomic<quint32> m_maxPayload = 4096;
    ReverseTable m_reverses;
    std::mutex m_sendMutex; // one packet at a time on the socket
    std::mutex m_mutex;
    std::map<quint32, std::weak_ptr<AdbStream>> m_streams;
    quint32 m_lastId = 0;
    bool m_ended = false;
};

} // namespace standin
