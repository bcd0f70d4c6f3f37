#include "stream/VideoSender.h"

#include "stream/PacketHeader.h"

#include <QRandomGenerator>
#include <unistd.h>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

constexpr quint32 h264 = 0x68323634;
constexpr quint32 h265 = 0x68323635;

QByteArray noise(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = static_cast<char>(QRandomGenerator::global()->bounded(256));
    return bytes;
}

} // namespace

VideoSender::VideoSender(
    Device &device, std::shared_ptr<Display> display, const StreamOptions &options, SessionSocket &socket)
    : m_device(device)
    , m_display(std::move(display))
    , m_options(options)
    , m_socket(socket)
    , m_pacer(std::chrono::nanoseconds(1000000000LL / options.maxFps))
{
}

void VideoSender::run()
{
    if (!sendPreamble())
        return;
    while (sendFrame()) {
        if (const auto stall = m_device.faults.number(u"stall-video-after"_s); stall && m_encoded >= *stall) {
            waitForEnd();
            return;
        }
        const int missed = m_pacer.wait();
        if (missed < 0)
            return;
        m_skipped += missed;
    }
}

void VideoSender::stop()
{
    m_pacer.stop();
}

bool VideoSender::sendPreamble()
{
    QByteArray name = m_device.property(u"ro.product.model"_s).toUtf8().left(63);
    name.append(64 - name.size(), '\0');
    const bool isWrong = m_device.faults.has(u"wrong-video-codec"_s);
    return m_socket.write(name + bigEndian32(isWrong ? h265 : h264));
}

bool VideoSender::sendFrame()
{
    const quint64 revision = m_display->revision(); // before the model, so that no change is missed
    const ScreenModel model = m_display->model();
    bool keyFrame = m_keyFrameWanted.exchange(false);
    if (model.size != m_size) {
        if (!startSize(model))
            return false;
        keyFrame = true;
    }
    for (const QRect &changed : m_renderer.render(model, revision))
        m_encoder->update(m_renderer.picture(), changed);
    const auto since = std::chrono::duration_cast<std::chrono::microseconds>(Pacer::Clock::now() - m_startedAt);
    const std::optional<H264Encoder::Packet> packet = m_encoder->encode(since.count(), keyFrame);
    return packet && sendMedia(*packet, since.count());
}

bool VideoSender::startSize(const ScreenModel &model)
{
    m_encoder = std::make_unique<H264Encoder>(model.size, m_options.videoBitRate, m_options.maxFps);
    if (!m_encoder->isValid()) {
        m_device.journal.add(u"errors"_s, u"the video encoder does not start"_s);
        return false;
    }
    m_size = model.size;
    const QByteArray sets = m_encoder->parameterSets();
    return m_socket.write(
        sessionPacket(static_cast<quint32>(m_size.width()), static_cast<quint32>(m_size.height()))
        + packetHeader(ConfigPacket, static_cast<quint32>(sets.size())) + sets);
}

bool VideoSender::sendMedia(const H264Encoder::Packet &packet, qint64 time)
{
    const FaultPlan &faults = m_device.faults;
    const quint64 flagsAndTime = static_cast<quint64>(time) | (packet.isKeyFrame ? quint64(KeyFramePacket) : 0);
    if (const auto size = faults.number(u"oversize-packet"_s); size && m_encoded > 0) {
        m_socket.write(packetHeader(flagsAndTime, static_cast<quint32>(*size)));
        return waitForEnd();
    }
    const QByteArray bytes = faults.has(u"garbage-video"_s) ? noise(packet.bytes.size()) : packet.bytes;
    if (!m_socket.write(packetHeader(flagsAndTime, static_cast<quint32>(bytes.size())) + bytes))
        return false;
    ++m_encoded;
    if (const auto last = faults.number(u"die-after-frames"_s); last && m_encoded >= *last)
        ::_exit(9);
    return true;
}

bool VideoSender::waitForEnd()
{
    while (m_pacer.wait() >= 0) { }
    return false;
}

} // namespace standin
