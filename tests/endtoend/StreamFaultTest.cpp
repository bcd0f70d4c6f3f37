#include "endtoend/EndToEnd.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace quillnest::driver
{

namespace
{
const auto package = QStringLiteral("app.quillnest.samples.tide");
}

/// A program that has shown Tide once and closed it, with a device that does as it is told.
class StreamFaultTest : public EndToEnd
{
protected:
    StreamFaultTest() : EndToEnd(small()) { }

    static TestDesktop::Options small()
    {
        TestDesktop::Options options;
        options.screen = {1200, 1000};
        options.scale = 1;
        options.sound = false;
        return options;
    }

    void TearDown() override
    {
        if (HasFailure())
            std::fprintf(stderr, "---- the window's log\n%s----\n", qUtf8Printable(program.windowLog(package)));
    }

    void SetUp() override
    {
        program.configureDevice({{QStringLiteral("bootSeconds"), 0.2}});
        program.start();
        openTide();
        closeWindow();
        // The volume is set a moment after the first picture, also of a window that has gone.
        waitFor(QStringLiteral("the volume to be set"), 10, [this] {
            return program.device().value(QStringLiteral("volume")).toObject()[QStringLiteral("3")].toInt() > 0;
        });
        waitFor(QStringLiteral("adb to end"), 10, [this] { return program.children().isEmpty(); });
        descriptorsBefore = program.descriptors();
    }

    void fault(const char *name, const QString &argument = {}) const
    {
        program.deviceControl({QStringLiteral("fault"), QLatin1String(name), argument});
    }
    void noFaults() const { program.deviceControl({QStringLiteral("fault"), QStringLiteral("clear")}); }

    void click() const { program.post(QStringLiteral("open:Tide")); }

    void closeWindow() const
    {
        program.post(QStringLiteral("close-all"));
        waitForNoWindow();
        waitForStatus(QStringLiteral("Closed Tide"));
    }

    int frames(const char *what) const { return program.window().value(QLatin1String(what)).toInt(); }

    /// Nothing of an ended window is left: no process, no socket, no server on the device; and the next click works.
    void expectNothingLeftAndANewWindow() const
    {
        waitFor(QStringLiteral("the child processes to end"), 20, [this] { return program.children().isEmpty(); });
        try {
            waitFor(QStringLiteral("the descriptors to be closed"), 10, [this] {
                return program.descriptors().size() <= descriptorsBefore.size();
            });
        } catch (const DriverError &error) {
            ADD_FAILURE() << error.what() << "\nbefore: " << descriptorsBefore.join(QLatin1Char(' ')).toStdString()
                          << "\nnow: " << program.descriptors().join(QLatin1Char(' ')).toStdString();
        }
        waitFor(QStringLiteral("the device's session to end"), 10, [this] {
            return program.device().value(QStringLiteral("sessions")).toArray().isEmpty();
        });
        noFaults();
        click();
        program.waitForPicture(30);
        waitForMorePictures();
    }

    void waitForWindowLog(const QString &line) const
    {
        waitFor(QStringLiteral("\"%1\" in the window's log").arg(line), 20, [this, &line] {
            return program.windowLog(package).contains(line);
        });
    }

    void touchTheMiddle() const
    {
        const int before = touches();
        desktop.click(videoArea().center());
        waitFor(QStringLiteral("a touch to reach the device"), 10, [this, before] { return touches() >= before + 2; });
    }
    int touches() const { return program.device().value(QStringLiteral("touchesSeen")).toInt(); }
    QRect videoArea() const { return rectangle(program.window().value(QStringLiteral("videoArea")).toObject()); }

    /// How far the lower parts, where nothing moves, of what a window and the device show are apart at the worst place:
    /// 0 to 255. Looked at in coarse, so that compression hardly counts.
    static int difference(const QImage &window, const QImage &device)
    {
        const auto coarse = [&device](const QImage &screen) {
            const auto beside = (screen.size() - device.size()) / 2;
            const QRect shown(QPoint(beside.width(), beside.height()), device.size());
            return screen.copy(shown.adjusted(0, shown.height() / 2, 0, 0))
                .scaled(48, 48, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                .convertToFormat(QImage::Format_RGB32);
        };
        const auto a = coarse(window);
        const auto b = coarse(device);
        int worst = 0;
        for (int y = 0; y < a.height(); ++y) {
            for (int x = 0; x < a.width(); ++x) {
                const QColor left(a.pixel(x, y));
                const QColor right(b.pixel(x, y));
                worst = std::max(
                    {worst, std::abs(left.red() - right.red()), std::abs(left.green() - right.green()),
                     std::abs(left.blue() - right.blue())});
            }
        }
        return worst;
    }

    /// Sends so much that messages wait in the program: adb and the kernel hold several megabytes back.
    void fillTheQueue()
    {
        desktop.setClipboard(QString(199000, QLatin1Char('x')));
        for (int i = 0; frames("controlWaiting") < 3; ++i) {
            if (i == 100) {
                const auto report = QJsonDocument(program.window()).toJson();
                FAIL() << "the queue never fills: " << report.constData();
            }
            desktop.key(QStringLiteral("ctrl+v"));
        }
    }

    QStringList descriptorsBefore;
};

TEST_F(StreamFaultTest, aServerThatNeverConnectsIsGivenUpAfterFifteenSecondsWithASentence)
{
    fault("never-connect");
    QElapsedTimer timer;
    timer.start();
    click();
    waitForStatus(QStringLiteral("Opened Tide"));
    waitForStatus(
        QStringLiteral("Tide stopped: Could not connect to Android: "
                       "failed(\"timed out waiting for the Android side to connect\")"),
        30);
    EXPECT_GE(timer.elapsed(), 15000);
    waitForNoWindow();
    EXPECT_TRUE(program.windowLog(package).contains(
        QStringLiteral("Quillnest: stream start failed: "
                       "failed(\"timed out waiting for the Android side to connect\")")));
    waitForLog(QStringLiteral("native window ended package=%1 error=Could not connect to Android: ").arg(package));
    expectNothingLeftAndANewWindow();
}

TEST_F(StreamFaultTest, aServerThatConnectsLateIsWaitedFor)
{
    fault("connect-late", QStringLiteral("4"));
    click();
    waitForStatus(QStringLiteral("Opened Tide"));
    waitFor(QStringLiteral("the server to run"), 20, [this] {
        return !program.device().value(QStringLiteral("sessions")).toArray().isEmpty();
    });
    EXPECT_TRUE(program.window().value(QStringLiteral("visible")).toBool()) << "black meanwhile";
    EXPECT_EQ(frames("framesShown"), 0);
    program.waitForPicture(15);
    EXPECT_EQ(program.statusMessage(), QStringLiteral("Opened Tide"));
    closeWindow();
    expectNothingLeftAndANewWindow();
}

TEST_F(StreamFaultTest, aVideoSocketThatClosesBeforeItsGreetingIsWholeIsToldInASentence)
{
    // A server that ends with its socket may be seen to end first; then there is no sentence.
    fault("server-outlives-its-sockets");
    for (const int bytes : {0, 63, 67}) {
        fault("close-video-after", QString::number(bytes));
        click();
        waitForStatus(QStringLiteral("Tide stopped: Video stream closed early"));
        waitForNoWindow();
    }
    expectNothingLeftAndANewWindow();
}

TEST_F(StreamFaultTest, aVideoSocketThatClosesBehindItsGreetingClosesTheWindow)
{
    fault("server-outlives-its-sockets");
    fault("close-video-after", QStringLiteral("68"));
    click();
    waitForStatus(QStringLiteral("Closed Tide"));
    waitForNoWindow();
    EXPECT_FALSE(program.windowLog(package).contains(QStringLiteral("first frame")));

    fault("close-video-after", QStringLiteral("60000"));
    click();
    waitForWindowLog(QStringLiteral("Quillnest: first frame after "));
    waitForStatus(QStringLiteral("Closed Tide"));
    waitForNoWindow();
    EXPECT_EQ(program.log().count(QStringLiteral("native window ended package=%1 error=none").arg(package)), 3);
    expectNothingLeftAndANewWindow();
}

TEST_F(StreamFaultTest, aServerThatEndsInMidStreamClosesTheWindow)
{
    click();
    program.waitForPicture();
    desktop.run(
        QStringLiteral("adb"),
        {QStringLiteral("-s"), QStringLiteral("emulator-5556"), QStringLiteral("shell"),
         QStringLiteral("pkill -f com.genymobile.scrcpy.Server")});
    waitForStatus(QStringLiteral("Closed Tide"));
    waitForNoWindow();
    expectNothingLeftAndANewWindow();
}

TEST_F(StreamFaultTest, aVideoInAnotherCodecIsRefusedWithItsNumber)
{
    fault("wrong-video-codec");
    click();
    waitForStatus(QStringLiteral("Tide stopped: Unsupported video codec 0x68323635"));
    waitForNoWindow();
    expectNothingLeftAndANewWindow();
}

TEST_F(StreamFaultTest, theLossOfTheSoundAndOfTheControlSocketLeavesThePicture)
{
    fault("close-audio-after", QStringLiteral("20000"));
    click();
    program.waitForPicture();
    waitForWindowLog(QStringLiteral("Quillnest: audio forwarding on (48 kHz stereo PCM)"));
    waitForMorePictures();
    touchTheMiddle();
    closeWindow();

    noFaults();
    fault("close-control-after", QStringLiteral("100"));
    click();
    program.waitForPicture();
    // More than the device reads: keys and touches go nowhere from then on.
    for (int i = 0; i < 4; ++i)
        desktop.click(videoArea().center());
    waitForMorePictures();
    EXPECT_EQ(program.statusMessage(), QStringLiteral("Opened Tide"));
    closeWindow();
    expectNothingLeftAndANewWindow();
}

TEST_F(StreamFaultTest, soundInAnotherCodecCostsTheSoundAlone)
{
    fault("wrong-audio-codec");
    click();
    program.waitForPicture();
    waitForWindowLog(QStringLiteral("Quillnest: audio forwarding unavailable (codec 0x6f707573)"));
    waitForMorePictures();
    touchTheMiddle();
    EXPECT_EQ(frames("audioPackets"), 0);
    closeWindow();
    expectNothingLeftAndANewWindow();
}

TEST_F(StreamFaultTest, aPacketPastTheLimitClosesTheWindowAndOneAtTheLimitIsReadOn)
{
    fault("oversize-packet", QStringLiteral("33554432"));
    click();
    waitForStatus(QStringLiteral("Closed Tide"));
    waitForNoWindow();

    fault("oversize-packet", QStringLiteral("33554431"));
    click();
    program.waitForPicture();
    // The rest of the packet never comes. The window keeps its picture and the app its input.
    touchTheMiddle();
    EXPECT_EQ(program.statusMessage(), QStringLiteral("Opened Tide"));
    EXPECT_EQ(frames("framesEnqueued"), 1);
    closeWindow();
    expectNothingLeftAndANewWindow();
}

TEST_F(StreamFaultTest, afterGarbageThePictureIsRightAgainAtTheNextKeyFrame)
{
    click();
    program.waitForPicture();
    const auto apart = [this] { return difference(desktop.screenshot(videoArea()), program.deviceScreenshot()); };
    waitFor(QStringLiteral("the window to show what the device shows"), 10, [&apart] { return apart() < 12; });
    fault("garbage-video");
    const int before = frames("framesEnqueued");
    // The list moves on the device alone.
    desktop.click(videoArea().center(), 5);
    waitFor(QStringLiteral("the window to be wrong"), 10, [&apart] { return apart() > 40; });
    program.waitForState(QStringLiteral("garbage to arrive"), 10, [before](const QJsonObject &state) {
        return windows(state).first()[QStringLiteral("framesEnqueued")].toInt() > before + 60;
    });
    noFaults();
    EXPECT_EQ(program.statusMessage(), QStringLiteral("Opened Tide"));
    // A device sends a key frame every ten seconds.
    waitFor(QStringLiteral("the window to be right again"), 25, [&apart] { return apart() < 12; });
    EXPECT_EQ(program.statusMessage(), QStringLiteral("Opened Tide"));
    closeWindow();
    expectNothingLeftAndANewWindow();
}

TEST_F(StreamFaultTest, aStalledStreamKeepsItsLastPictureAndTheWindowCloses)
{
    fault("stall-video-after", QStringLiteral("30"));
    click();
    program.waitForPicture();
    program.waitForState(QStringLiteral("the last frame"), 10, [](const QJsonObject &state) {
        return windows(state).first()[QStringLiteral("framesEnqueued")].toInt() == 30;
    });
    const auto stalled = desktop.screenshot(videoArea());
    touchTheMiddle();
    EXPECT_EQ(desktop.screenshot(videoArea()), stalled);
    EXPECT_EQ(program.window().value(QStringLiteral("framesEnqueued")).toInt(), 30);
    EXPECT_NE(stalled.pixelColor(stalled.rect().center()), QColor(Qt::black));
    closeWindow();
    expectNothingLeftAndANewWindow();
}

TEST_F(StreamFaultTest, aDeviceThatDiesInMidStreamTakesTheWindowAndTheNextClickStartsAnother)
{
    fault("die-after-frames", QStringLiteral("60"));
    click();
    program.waitForPicture();
    waitForNoWindow();
    waitForStatus(QStringLiteral("Android stopped, and Tide with it. Open Tide again to restart it."));
    waitFor(QStringLiteral("the child processes to end"), 20, [this] { return program.children().isEmpty(); });
    click();
    program.waitForPicture(60);
    waitForMorePictures();
}

TEST_F(StreamFaultTest, aWindowMayBeClosedAtAnyMomentOfItsConnection)
{
    const auto moment = desktop.home() + QStringLiteral("/moment");
    const auto go = desktop.home() + QStringLiteral("/go");
    for (const auto &step :
         {"push ", "reverse localabstract:", "shell CLASSPATH=", "reverse --remove ", "never-connect"}) {
        const bool connecting = QByteArray(step) == "never-connect";
        QFile::remove(moment);
        QFile::remove(go);
        if (connecting) {
            program.replaceAdb(QStringLiteral("exec \"$adb\" \"$@\""));
            fault(step);
        } else {
            // Adb stops before this one step until it may go on.
            program.replaceAdb(QStringLiteral("case \"$*\" in *\"-s emulator-5556 %1\"*)\n"
                                              "  touch '%2'; while [ ! -e '%3' ]; do sleep 0.02; done;; esac\n"
                                              "exec \"$adb\" \"$@\"")
                                   .arg(QLatin1String(step), moment, go));
        }
        click();
        waitForStatus(QStringLiteral("Opened Tide"));
        waitFor(QStringLiteral("the moment of %1").arg(QLatin1String(step)), 20, [&] {
            return connecting ? !program.device().value(QStringLiteral("sessions")).toArray().isEmpty()
                              : QFile::exists(moment);
        });
        program.post(QStringLiteral("close-all"));
        program.waitForState(QStringLiteral("the window to go at once"), 10, [](const QJsonObject &state) {
            return !windows(state).first()[QStringLiteral("visible")].toBool();
        });
        QFile(go).open(QIODevice::WriteOnly);
        // Long before the connection would be given up.
        waitForNoWindow(8);
        waitForStatus(QStringLiteral("Closed Tide"));
        noFaults();
    }
    program.replaceAdb(QStringLiteral("exec \"$adb\" \"$@\""));
    expectNothingLeftAndANewWindow();
    // In mid-stream, and between the first bytes and the first picture.
    closeWindow();
    fault("oversize-packet", QStringLiteral("1000"));
    fault("garbage-video");
    click();
    waitForStatus(QStringLiteral("Opened Tide"));
    waitForWindowLog(QStringLiteral("Quillnest: video session"));
    closeWindow();
    expectNothingLeftAndANewWindow();
}

TEST_F(StreamFaultTest, aDeviceThatStopsReadingHoldsNothingUpAndFindsTheFingerLiftedWhenItReadsAgain)
{
    click();
    program.waitForPicture();
    fault("device-stops-reading-control");
    // Enough to fill whatever lies between: adb and the kernel hold several megabytes back.
    ASSERT_NO_FATAL_FAILURE(fillTheQueue());
    const QPointF middle = videoArea().center();
    desktop.drag(middle, middle + QPointF(0, 150));
    const int waiting = frames("controlWaiting");
    EXPECT_GT(waiting, 3);
    waitForMorePictures();
    EXPECT_EQ(program.device().value(QStringLiteral("touchesSeen")).toInt(), 0);

    noFaults();
    program.waitForState(QStringLiteral("the queue to be emptied"), 30, [](const QJsonObject &state) {
        return windows(state).first()[QStringLiteral("controlWaiting")].toInt() == 0;
    });
    waitFor(QStringLiteral("the finger to be lifted"), 20, [this] {
        const auto seen = program.device().value(QStringLiteral("touches")).toArray();
        return !seen.isEmpty() && seen.last()[QStringLiteral("action")].toInt() == 1;
    });
    const auto seen = program.device().value(QStringLiteral("touches")).toArray();
    EXPECT_EQ(seen.first()[QStringLiteral("action")].toInt(), 0);
    EXPECT_NEAR(seen.last()[QStringLiteral("y")].toInt(), videoArea().height() / 2 + 150, 5);
    closeWindow();
    expectNothingLeftAndANewWindow();
}

TEST_F(StreamFaultTest, aWindowWhoseDeviceDoesNotReadCloses)
{
    click();
    program.waitForPicture();
    fault("device-stops-reading-control");
    ASSERT_NO_FATAL_FAILURE(fillTheQueue());
    closeWindow();
    expectNothingLeftAndANewWindow();
}

} // namespace quillnest::driver
