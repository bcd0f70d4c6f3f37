#include "emulator/AdbAnnouncer.h"

#include "common/Sockets.h"

#include <chrono>
#include <thread>

namespace standin
{

namespace
{

/// Requests to the adb server carry their length as four hexadecimal digits.
QByteArray request(const QByteArray &text)
{
    return QByteArray::number(text.size(), 16).rightJustified(4, '0') + text;
}

} // namespace

quint16 adbServerPort()
{
    const int port = qEnvironmentVariableIntValue("ANDROID_ADB_SERVER_PORT");
    return port > 0 && port < 65536 ? static_cast<quint16>(port) : 5037;
}

AdbAnnouncer::AdbAnnouncer(quint16 serverPort, quint16 consolePort)
    : m_serverPort(serverPort), m_consolePort(consolePort)
{
}

void AdbAnnouncer::start() const
{
    std::thread([self = *this] {
        for (;;) {
            if (!self.isListed())
                self.announce();
            std::this_thread::sleep_for(std::chrono::milliseconds(700));
        }
    }).detach();
}

bool AdbAnnouncer::isListed() const
{
    const UniqueFd server = connectToLoopback(m_serverPort);
    char head[8];
    if (!server.isValid() || !writeAll(server.get(), request("host:devices"))
        || !readExactly(server.get(), head, sizeof head) || QByteArray(head, 4) != "OKAY")
        return false;
    QByteArray list(QByteArray(head + 4, 4).toInt(nullptr, 16), Qt::Uninitialized);
    return readExactly(server.get(), list.data(), static_cast<size_t>(list.size()))
        && list.contains("emulator-" + QByteArray::number(m_consolePort) + '\t');
}

void AdbAnnouncer::announce() const
{
    const UniqueFd server = connectToLoopback(m_serverPort);
    if (server.isValid()) // the server does not answer this one
        writeAll(server.get(), request("host:emulator:" + QByteArray::number(m_consolePort + 1)));
}

} // namespace standin
