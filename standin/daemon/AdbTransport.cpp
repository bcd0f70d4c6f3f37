#include "daemon/AdbTransport.h"

#include <sys/socket.h>
#include <thread>

namespace standin
{

AdbTransport::AdbTransport(UniqueFd socket, QByteArray banner, Router router)
    : m_socket(std::move(socket)), m_banner(std::move(banner)), m_router(std::move(router))
{
}

void AdbTransport::run()
{
    while (std::optional<AdbPacket> packet = AdbPacket::read(m_socket.get()))
        handle(std::move(*packet));
    closeEverything();
}

bool AdbTransport::send(const AdbPacket &packet)
{
    const std::lock_guard lock(m_sendMutex);
    return packet.write(m_socket.get());
}

std::shared_ptr<AdbStream> AdbTransport::open(const QByteArray &destination)
{
    const std::shared_ptr<AdbStream> opened = addStream(0);
    {
        const std::lock_guard lock(m_mutex);
        if (m_ended)
            return nullptr;
    }
    send({AdbPacket::Open, opened->localId(), 0, destination + '\0'});
    return opened->waitUntilOpen(std::chrono::seconds(10)) ? opened : nullptr;
}

void AdbTransport::forget(quint32 localId)
{
    const std::lock_guard lock(m_mutex);
    m_streams.erase(localId);
}

void AdbTransport::handle(AdbPacket packet)
{
    switch (packet.command) {
    case AdbPacket::Connect:
        m_maxPayload = qMin(packet.arg1, AdbPacket::MaxPayload);
        send({AdbPacket::Connect, AdbPacket::Version, AdbPacket::MaxPayload, m_banner});
        break;
    case AdbPacket::Open:
        handleOpen(packet);
        break;
    case AdbPacket::Okay:
        if (const auto target = stream(packet.arg1))
            target->acknowledged(packet.arg0);
        break;
    case AdbPacket::Write:
        if (const auto target = stream(packet.arg1))
            target->received(std::move(packet.payload));
        break;
    case AdbPacket::Close:
        if (const auto target = stream(packet.arg1)) {
            target->closedByHost();
            forget(packet.arg1);
        }
        break;
    default:
        break; // a packet that is not for devices, or from a newer adb than we know
    }
}

void AdbTransport::handleOpen(const AdbPacket &packet)
{
    QByteArray name = packet.payload;
    while (name.endsWith('\0'))
        name.chop(1);
    Service service = m_router(shared_from_this(), name);
    if (!service) {
        send({AdbPacket::Close, 0, packet.arg0, {}});
        return;
    }
    const std::shared_ptr<AdbStream> opened = addStream(packet.arg0);
    send({AdbPacket::Okay, opened->localId(), packet.arg0, {}});
    std::thread([service = std::move(service), opened] {
        service(opened);
        opened->close();
    }).detach();
}

std::shared_ptr<AdbStream> AdbTransport::addStream(quint32 remoteId)
{
    const std::lock_guard lock(m_mutex);
    const quint32 localId = ++m_lastId;
    auto added = std::make_shared<AdbStream>(shared_from_this(), localId, remoteId);
    m_streams[localId] = added;
    return added;
}

std::shared_ptr<AdbStream> AdbTransport::stream(quint32 localId)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_streams.find(localId);
    return found == m_streams.end() ? nullptr : found->second.lock();
}

void AdbTransport::closeEverything()
{
    ::shutdown(m_socket.get(), SHUT_RDWR);
    std::map<quint32, std::weak_ptr<AdbStream>> streams;
    {
        const std::lock_guard lock(m_mutex);
        m_ended = true;
        streams.swap(m_streams);
    }
    for (const auto &[id, weak] : streams) {
        if (const auto open = weak.lock())
            open->closedByHost();
    }
}

} // namespace standin
