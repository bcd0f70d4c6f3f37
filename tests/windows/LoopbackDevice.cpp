#include "windows/LoopbackDevice.h"

#include "stream/ScrcpyControl.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QHostAddress>
#include <QThread>
#include <QtEndian>

namespace quillnest
{

namespace
{
constexpr int patience = 30000;

QByteArray bigEndian(std::uint32_t value)
{
    const auto swapped = qToBigEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&swapped), sizeof swapped);
}

std::unique_ptr<QTcpSocket> connected(int port)
{
    auto socket = std::make_unique<QTcpSocket>();
    socket->connectToHost(QHostAddress(QHostAddress::LocalHost), static_cast<quint16>(port));
    if (!socket->waitForConnected(patience))
        throw std::runtime_error("nobody listens for the device");
    return socket;
}

void write(QTcpSocket &socket, const QByteArray &bytes)
{
    socket.write(bytes);
    while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(patience)) { }
}
} // namespace

bool comesTrue(const FakePlatform &fakes, const std::function<bool()> &condition)
{
    for (const QDeadlineTimer limit(patience); !limit.hasExpired(); QThread::yieldCurrentThread()) {
        fakes.settle();
        // What a running event loop does by itself.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (condition())
            return true;
    }
    return false;
}

LoopbackDevice::LoopbackDevice(const FakePlatform &fakes) : m_fakes(fakes)
{
    fakes.settings->setValue(QStringLiteral("QuillnestForwardAudio"), false);
    fakes.processes->on(QStringLiteral(" reverse localabstract:"), [this](const ChildCommand &command) {
        m_port = command.arguments.last().mid(4).toInt();
        return ScriptedProcesses::Answer{};
    });
    fakes.processes->onStart(
        QStringLiteral("app_process / com.genymobile.scrcpy.Server"), [this](ScriptedChild &) { ++m_servers; });
}

void LoopbackDevice::connect(const AppSession &session)
{
    if (!comesTrue(m_fakes, [this] { return m_servers > m_connections; }))
        throw std::runtime_error("no server was started");
    m_connections = m_servers;
    m_received.clear();
    m_video = connected(m_port);
    m_control = connected(m_port);
    write(*m_video, QByteArray("a device").leftJustified(64, '\0') + bigEndian(0x68323634));
    // The first message is the one that starts the app; from here on everything arrives.
    const auto begin = ScrcpyControl::startApp(QLatin1Char('+') + session.package());
    if (receive(begin.size()) != begin)
        throw std::runtime_error("the app was not started");
}

void LoopbackDevice::announce(const AppSession &session, QSize size)
{
    write(
        *m_video,
        bigEndian(0x80000000) + bigEndian(static_cast<std::uint32_t>(size.width()))
            + bigEndian(static_cast<std::uint32_t>(size.height())));
    if (!comesTrue(m_fakes, [&] { return session.counters().videoSize == size; }))
        throw std::runtime_error("the size did not arrive");
}

void LoopbackDevice::sendPicture()
{
    const auto packet = [](char flags, const QByteArray &payload) {
        return QByteArray(1, flags) + QByteArray(7, 0) + bigEndian(static_cast<std::uint32_t>(payload.size()))
            + payload;
    };
    write(
        *m_video,
        packet(0x40, QByteArray::fromHex("000000016742aa0000000168bb"))
            + packet(0x20, QByteArray::fromHex("000000016588")));
}

QByteArray LoopbackDevice::receive(qsizetype count)
{
    const bool came = comesTrue(m_fakes, [this, count] {
        m_control->waitForReadyRead(1);
        m_received += m_control->readAll();
        return m_received.size() >= count;
    });
    if (!came)
        throw std::runtime_error("the session sent too little");
    const auto bytes = m_received.left(count);
    m_received.remove(0, count);
    return bytes;
}

QByteArray LoopbackDevice::sent(AppSession &session)
{
    // Messages arrive in the order in which they were sent, so nothing is under way once this one is here.
    static const QByteArray mark = QByteArrayLiteral("\xFE the end of what was sent \xFE");
    session.send(mark);
    qsizetype at = -1;
    const bool came = comesTrue(m_fakes, [this, &at] {
        m_control->waitForReadyRead(1);
        m_received += m_control->readAll();
        at = m_received.indexOf(mark);
        return at >= 0;
    });
    if (!came)
        throw std::runtime_error("the control socket is silent");
    const auto bytes = m_received.left(at);
    m_received.remove(0, at + mark.size());
    return bytes;
}

void LoopbackDevice::hangUp()
{
    m_video.reset();
    m_control.reset();
}

} // namespace quillnest
