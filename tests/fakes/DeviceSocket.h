#pragma once

#include <QByteArray>

#include <cstdint>

namespace quillnest
{

/// The device's end of one connection, in a test's hands.
class DeviceSocket
{
public:
    DeviceSocket() = default;
    /// Connects to a port of this machine.
    explicit DeviceSocket(std::uint16_t port);
    ~DeviceSocket();
    DeviceSocket(DeviceSocket &&other) noexcept;
    DeviceSocket &operator=(DeviceSocket &&other) noexcept;

    bool isOpen() const { return m_descriptor >= 0; }
    /// False when the other side has gone.
    bool send(const QByteArray &bytes);
    /// `count` bytes, or fewer when the other side ends the connection or is silent for half a minute.
    QByteArray receive(int count);
    /// Everything up to and with `end`, or less when the other side ends the connection or falls silent.
    QByteArray receiveUntil(const QByteArray &end);
    /// Whether the other side ends the connection, whatever else it sends before.
    bool ends();
    void close();

private:
    int m_descriptor = -1;
};

/// What a video socket begins with: a device name and a codec id.
QByteArray videoPreamble(std::uint32_t codec = 0x68323634);
/// A header of 12 bytes with these first byte and size, and the payload.
QByteArray packet(std::uint8_t flags, const QByteArray &payload);
QByteArray packetHeader(std::uint8_t flags, std::uint32_t size);
QByteArray sessionPacket(std::uint32_t width, std::uint32_t height);
QByteArray bigEndian(std::uint32_t value);

constexpr std::uint8_t configFlag = 0x40;
constexpr std::uint8_t keyFlag = 0x20;
constexpr std::uint8_t deltaFlag = 0x00;

} // namespace quillnest
