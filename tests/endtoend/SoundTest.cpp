#include "endtoend/EndToEnd.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <optional>

namespace quillnest::driver
{

namespace
{

constexpr double rate = 48000;
/// Softer than anything of the tone but its crossings of nothing.
constexpr int quiet = 300;

bool isQuiet(std::int16_t sample)
{
    return std::abs(static_cast<int>(sample)) < quiet;
}

/// The longest stretch without sound, in milliseconds.
double longestGap(const std::vector<std::int16_t> &samples)
{
    std::size_t longest = 0;
    std::size_t run = 0;
    for (const auto sample : samples) {
        run = isQuiet(sample) ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return static_cast<double>(longest) * 1000 / rate;
}

/// The pitch by the rising crossings of nothing, in hertz; 0 for silence.
double pitch(const std::vector<std::int16_t> &samples)
{
    std::vector<std::size_t> crossings;
    bool below = false;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (samples[i] < -quiet)
            below = true;
        else if (samples[i] > quiet && std::exchange(below, false))
            crossings.push_back(i);
    }
    if (crossings.size() < 20)
        return 0;
    return rate * static_cast<double>(crossings.size() - 1) / static_cast<double>(crossings.back() - crossings.front());
}

} // namespace

class SoundTest : public EndToEnd
{
protected:
    SoundTest() : EndToEnd(small()) { }

    static TestDesktop::Options small()
    {
        TestDesktop::Options options;
        options.screen = {1200, 1000};
        options.scale = 1;
        return options;
    }

    void openAndSetTheVolume()
    {
        program.configureDevice({{QStringLiteral("bootSeconds"), 0.2}});
        program.start();
        openTide();
        // The program sets it a moment after the first picture; nothing may change it later.
        waitForLog(QStringLiteral("native first frame"));
        const auto volumeSet = QStringLiteral("volume: stream 3 set to 15");
        waitFor(QStringLiteral("the volume to be set for the window"), 15, [this, &volumeSet] {
            return program.log().section(QStringLiteral("native first frame"), 1).contains(volumeSet);
        });
    }

    double tone() const
    {
        return program.device().value(QStringLiteral("sessions")).toArray().first()[QStringLiteral("tone")].toDouble();
    }

    void waitForSound(double seconds = 20)
    {
        const double wanted = tone();
        waitFor(QStringLiteral("the tone of %1 Hz").arg(wanted), seconds, [this, wanted] {
            const auto heard = desktop.recordSound(0.3);
            return std::abs(pitch(heard) - wanted) < 2 && longestGap(heard) < 5;
        });
    }

    void deviceVolume(int volume) const { deviceVolumeCommand(volume)->waitForFinished(10000); }
    std::unique_ptr<QProcess> deviceVolumeCommand(int volume) const
    {
        return desktop.start(
            QStringLiteral("adb"),
            {QStringLiteral("-s"), QStringLiteral("emulator-5556"), QStringLiteral("shell"),
             QStringLiteral("cmd media_session volume --stream 3 --set %1").arg(volume)});
    }

    /// How long after the device fell silent the loudspeaker does, in seconds. The recorder's own delay is in it.
    double delay()
    {
        const auto recorder = desktop.start(
            QStringLiteral("parec"),
            {QStringLiteral("--device=loudspeaker.monitor"), QStringLiteral("--format=s16le"),
             QStringLiteral("--rate=48000"), QStringLiteral("--channels=1"), QStringLiteral("--raw"),
             QStringLiteral("--latency-msec=5")});
        QElapsedTimer timer;
        timer.start();
        std::unique_ptr<QProcess> silencer;
        std::optional<double> silenced;
        double heardUntil = 0;
        waitFor(QStringLiteral("the loudspeaker to fall silent"), 20, [&] {
            recorder->waitForReadyRead(10);
            const auto bytes = recorder->readAllStandardOutput();
            const double now = static_cast<double>(timer.nsecsElapsed()) / 1e9;
            const auto count = bytes.size() / 2;
            for (qsizetype i = 0; i < count; ++i) {
                std::int16_t sample = 0;
                std::memcpy(&sample, bytes.constData() + 2 * i, 2);
                // The last sample arrived now, the others before it.
                if (!isQuiet(sample))
                    heardUntil = now - static_cast<double>(count - 1 - i) / rate;
            }
            if (!silencer && heardUntil > 0)
                silencer = deviceVolumeCommand(0);
            if (silencer && !silenced && silencer->waitForFinished(0))
                silenced = now;
            return silenced && now > std::max(heardUntil, *silenced) + 1;
        });
        recorder->kill();
        recorder->waitForFinished(5000);
        deviceVolume(15);
        return heardUntil - *silenced;
    }
};

TEST_F(SoundTest, theAppsToneIsHeardAtItsPitchWithoutGaps)
{
    openAndSetTheVolume();
    waitForSound();
    const auto heard = desktop.recordSound(6);
    EXPECT_NEAR(pitch(heard), tone(), 1);
    EXPECT_LT(longestGap(heard), 5) << "ms";
    int loudest = 0;
    for (const auto sample : heard)
        loudest = std::max(loudest, std::abs(static_cast<int>(sample)));
    EXPECT_NEAR(loudest, 8192, 300) << "neither softer nor louder than the device plays it";
    const double late = delay();
    std::printf("sound is heard %.0f ms after the device has played it\n", late * 1000);
    EXPECT_LT(late, 1);
}

TEST_F(SoundTest, withoutASoundServerThePictureGoesOnAndTheSoundComesWithTheServer)
{
    desktop.stopSoundServer();
    openAndSetTheVolume();
    waitForMorePictures();
    EXPECT_GT(program.window().value(QStringLiteral("audioPackets")).toInt(), 0);
    desktop.startSoundServer();
    waitForSound();
    waitForMorePictures();
    EXPECT_EQ(program.statusMessage(), QStringLiteral("Opened Tide"));
}

TEST_F(SoundTest, aSoundServerThatIsStartedAnewGetsTheSoundBack)
{
    openAndSetTheVolume();
    waitForSound();
    desktop.stopSoundServer();
    waitForMorePictures();
    desktop.startSoundServer();
    waitForSound();
    EXPECT_LT(longestGap(desktop.recordSound(2)), 5);
    EXPECT_EQ(program.statusMessage(), QStringLiteral("Opened Tide"));
}

TEST_F(SoundTest, aSoundServerThatStandsStillHoldsNothingUpAndMakesNothingLate)
{
    openAndSetTheVolume();
    waitForSound();
    desktop.freezeSoundServer();
    const auto shown = [this] { return program.window().value(QStringLiteral("framesShown")).toInt(); };
    const auto sent = [this] {
        return program.device()
            .value(QStringLiteral("sessions"))
            .toArray()
            .first()[QStringLiteral("framesEncoded")]
            .toInt();
    };
    QElapsedTimer timer;
    timer.start();
    const int shownBefore = shown();
    const int sentBefore = sent();
    // Long enough that sound which is kept would be late by more than anything else explains.
    waitFor(QStringLiteral("four seconds of pictures"), 20, [&] { return sent() > sentBefore + 240; });
    const int sentMeanwhile = sent() - sentBefore;
    const int shownMeanwhile = shown() - shownBefore;
    const double frozen = static_cast<double>(timer.elapsed()) / 1000;
    EXPECT_GT(shownMeanwhile, sentMeanwhile * 9 / 10);
    desktop.thawSoundServer();
    waitForSound();
    const double late = delay();
    std::printf("after %.1f s of standing still sound is %.0f ms late\n", frozen, late * 1000);
    EXPECT_LT(late, 1);
    waitForSound();
}

TEST_F(SoundTest, closingTheWindowSilencesTheLoudspeaker)
{
    openAndSetTheVolume();
    waitForSound();
    program.post(QStringLiteral("close-all"));
    waitForNoWindow();
    waitFor(QStringLiteral("silence"), 5, [this] {
        const auto heard = desktop.recordSound(0.3);
        return std::all_of(heard.begin(), heard.end(), isQuiet);
    });
    EXPECT_FALSE(desktop.run(QStringLiteral("pactl"), {QStringLiteral("list"), QStringLiteral("sink-inputs")})
                     .contains("Quillnest"));
}

} // namespace quillnest::driver
