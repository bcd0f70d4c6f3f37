// A device that says anything, in any order and in pieces of any size, on the three sockets of a whole client. What
// becomes of it is looked at by the sanitizers that this is built with, and by the fixture: each client ends once, with
// all its threads and descriptors. QUILLNEST_STREAM_CASES and QUILLNEST_STREAM_FIRST say how many devices there are and
// which is the first; each is the same under the same number. tests/fuzz/run stream runs many.
#include "EncodedVideo.h"
#include "StreamTest.h"

#include "hostile/Chance.h"
#include "platform/desktop/FFmpegSampleRenderer.h"
#include "platform/desktop/FFmpegStillDecoder.h"
#include "stream/ScrcpyControl.h"

#include <thread>

using namespace quillnest;
using hostile::Chance;

namespace
{

QByteArray noise(Chance &chance, std::uint32_t size)
{
    QByteArray bytes;
    for (std::uint32_t i = 0; i < size; ++i)
        bytes += static_cast<char>(chance.u32());
    return bytes;
}

QByteArray damaged(Chance &chance, QByteArray bytes)
{
    for (auto count = chance.below(4); count > 0 && !bytes.isEmpty(); --count)
        bytes[static_cast<qsizetype>(chance.below(static_cast<std::uint32_t>(bytes.size())))]
            = static_cast<char>(chance.u32());
    return bytes;
}

/// A packet whose head may promise more or less than comes.
QByteArray anyPacket(Chance &chance, std::uint8_t flags, const QByteArray &payload)
{
    if (!chance.oneIn(40))
        return packet(flags, payload);
    const auto size
        = chance.pick<std::uint32_t>({0, 1, 0xFFFFF, 0x100000, 0x1FFFFFF, 0x2000000, 0x7FFFFFFF, 0xFFFFFFFF});
    return packetHeader(flags, size) + payload;
}

QByteArray videoOf(Chance &chance)
{
    static const auto small = encodeRed(160, 96, 4);
    static const auto other = encodeRed(96, 160, 2);
    if (chance.oneIn(20))
        return noise(chance, chance.below(200));
    auto bytes = chance.oneIn(20) ? videoPreamble(chance.u32()) : videoPreamble();
    for (auto count = chance.below(60); count > 0; --count) {
        const auto &stream = chance.oneIn(3) ? other : small;
        const auto &unit = stream.units[chance.below(static_cast<std::uint32_t>(stream.units.size()))];
        const std::uint8_t flags = unit.keyFrame ? keyFlag : deltaFlag;
        switch (chance.below(8)) {
        case 0:
            for (auto again = chance.pick<std::uint32_t>({1, 2, 300}); again > 0; --again)
                bytes += sessionPacket(chance.number(4096), chance.number(4096));
            break;
        case 1:
            bytes += anyPacket(chance, configFlag, damaged(chance, stream.parameterSets));
            break;
        case 2:
            bytes += anyPacket(chance, static_cast<std::uint8_t>(chance.below(128)), noise(chance, chance.below(300)));
            break;
        case 3:
            bytes += anyPacket(chance, flags, damaged(chance, unit.bytes));
            break;
        case 4:
            bytes += anyPacket(chance, keyFlag, QByteArray("\x00\x00\x01", 3).repeated(chance.below(2000)));
            break;
        default:
            bytes += anyPacket(chance, configFlag, stream.parameterSets) + anyPacket(chance, flags, unit.bytes);
        }
    }
    return bytes;
}

QByteArray audioOf(Chance &chance)
{
    auto bytes = chance.oneIn(10) ? noise(chance, chance.below(8)) : bigEndian(0x00726177);
    for (auto count = chance.below(60); count > 0; --count)
        bytes += anyPacket(chance, chance.oneIn(6) ? configFlag : deltaFlag, noise(chance, chance.below(4000)));
    return bytes;
}

QByteArray messagesOf(Chance &chance)
{
    QByteArray bytes;
    for (auto count = chance.below(100); count > 0; --count) {
        switch (chance.below(30)) {
        case 0:
            bytes += noise(chance, chance.below(20));
            break;
        case 1:
            bytes += QByteArray(1, '\0') + bigEndian(chance.number(0x7FFFFF)) + noise(chance, 40);
            break;
        case 2:
        case 3:
            bytes += QByteArray("\x02\x00\x01", 3) + QByteArray("\x00\x20", 2) + noise(chance, 32);
            break;
        case 4:
            bytes += '\x01' + noise(chance, 8);
            break;
        default: {
            const auto text = chance.oneIn(3) ? noise(chance, chance.below(100)) : QByteArray("text \xF0\x9F\x98\x80");
            bytes += QByteArray(1, '\0') + bigEndian(static_cast<std::uint32_t>(text.size())) + text;
        }
        }
    }
    return bytes;
}

/// Says all of it in pieces, and then hangs up or stays silent.
void speak(DeviceSocket &socket, QByteArray bytes, Chance chance)
{
    const auto longest = chance.pick<std::uint32_t>({1, 13, 500, 100'000});
    // Single bytes of much would take their time and say nothing new.
    if (longest < 100)
        bytes.truncate(3000);
    for (qsizetype done = 0; done < bytes.size();) {
        const auto size = 1 + static_cast<qsizetype>(chance.below(longest));
        if (!socket.send(bytes.mid(done, size)))
            break;
        done += size;
        if (chance.oneIn(50))
            std::this_thread::yield();
    }
    if (chance.oneIn(2))
        socket.close();
}

class CountingConsumer : public SampleConsumer
{
public:
    void takeVideo(const VideoSample &sample, std::chrono::microseconds) override { bytes += sample.data.size(); }
    void takeAudio(std::span<const std::uint8_t> pcm, std::chrono::microseconds) override { bytes += pcm.size(); }
    void ended() override { ++ends; }

    std::atomic<std::size_t> bytes = 0;
    std::atomic_int ends = 0;
};

/// One client and its device.
class Session : public StreamTest
{
public:
    void TestBody() override { }

    void run(std::uint64_t device)
    {
        SetUp();
        talk(device);
        TearDown();
    }

private:
    /// What a user does meanwhile.
    void doSomething(Chance &chance)
    {
        using ScrcpyControl::MotionAction;
        switch (chance.below(7)) {
        case 0:
            client->requestSnapshot();
            break;
        case 1:
            client->statistics();
            break;
        case 2:
            client->send(ScrcpyControl::setClipboard(QString(static_cast<int>(chance.below(300'000)), u'x'), false, 2));
            break;
        case 3:
            fakes.clock->advance(std::chrono::milliseconds(chance.below(500)));
            break;
        case 4:
            client->videoSize();
            client->displayID();
            break;
        default:
            client->send(ScrcpyControl::touch(
                chance.pick({MotionAction::down, MotionAction::move, MotionAction::up}), {1, 1}, client->videoSize()));
        }
        QCoreApplication::processEvents();
    }

    void talk(std::uint64_t device)
    {
        Chance chance(device);
        const bool decodes = chance.oneIn(2);
        if (decodes)
            fakes.platform.video = std::make_shared<FFmpegVideoDecoding>();
        usedRenderer = decodes ? fakes.platform.video->sampleRenderer() : renderer;
        ASSERT_NO_FATAL_FAILURE(connectAll());
        const auto consumer = std::make_shared<CountingConsumer>();
        if (chance.oneIn(2))
            client->samples().attach(consumer);
        const Chance ofThreads[]{Chance(chance.u32()), Chance(chance.u32()), Chance(chance.u32())};
        std::thread threads[]{
            std::thread(speak, std::ref(videoSocket), videoOf(chance), ofThreads[0]),
            std::thread(speak, std::ref(audioSocket), audioOf(chance), ofThreads[1]),
            std::thread(speak, std::ref(controlSocket), messagesOf(chance), ofThreads[2])};
        for (auto count = chance.below(60); count > 0; --count)
            doSomething(chance);
        // Sometimes in the middle of it all.
        if (chance.oneIn(2))
            client->stop();
        if (chance.oneIn(4))
            server()->exit(1);
        // A client that is stopped, or has ended by itself, reads no more; one that hasn't reads all.
        for (auto &thread : threads)
            thread.join();
        EXPECT_LT(logLines().size(), 250) << "whatever it says, and however often";
    }
};

std::uint64_t number(const char *variable, std::uint64_t otherwise)
{
    const auto value = qEnvironmentVariable(variable);
    return value.isEmpty() ? otherwise : value.toULongLong();
}
} // namespace

TEST(StreamFuzz, aDeviceThatSaysAnything)
{
    const auto first = number("QUILLNEST_STREAM_FIRST", 1);
    const auto count = number("QUILLNEST_STREAM_CASES", 100);
    for (auto device = first; device < first + count; ++device) {
        SCOPED_TRACE(device);
        Session().run(device);
        ASSERT_FALSE(::testing::Test::HasFailure());
    }
}
