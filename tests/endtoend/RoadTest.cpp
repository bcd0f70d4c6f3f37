#include "driver/Road.h"

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quillnest::driver
{

namespace
{

bool isNear(QRgb pixel, QRgb color)
{
    const auto close = [](int a, int b) { return std::abs(a - b) < 24; };
    return close(qRed(pixel), qRed(color)) && close(qGreen(pixel), qGreen(color)) && close(qBlue(pixel), qBlue(color));
}

} // namespace

TEST(RoadTest, aClickOpensALiveAppAndEverythingTravelsBothWays)
{
    QTemporaryDir folder;
    const auto report = goTheRoad(folder.path());
    const auto number = [&report](const char *key) { return report.value(QLatin1String(key)).toDouble(-1); };

    const auto archives = report.value(QStringLiteral("archives")).toArray();
    ASSERT_EQ(archives.size(), 3);
    for (const auto &archive : archives) {
        EXPECT_GT(archive[QStringLiteral("bytes")].toDouble(), 100'000);
        EXPECT_EQ(archive[QStringLiteral("checksum")].toString(), QStringLiteral("matched"));
    }
    EXPECT_EQ(
        report.value(QStringLiteral("licencesAccepted")).toArray(), QJsonArray{QStringLiteral("android-sdk-license")});
    EXPECT_GT(number("provisionSeconds"), 0.0);
    EXPECT_TRUE(QFile::exists(folder.filePath(QStringLiteral("setup.png"))));
    EXPECT_GT(number("bootSeconds"), 1.0) << "the stand-in takes a while to boot";
    EXPECT_EQ(report.value(QStringLiteral("package")).toString(), QStringLiteral("app.quillnest.samples.tide"));
    EXPECT_GT(number("installSeconds"), 0.0);
    EXPECT_EQ(number("repeatLaunchAdbCommands"), 1);
    EXPECT_GT(number("firstFrameSeconds"), 0.0);
    EXPECT_GT(number("framesShown"), 0);
    EXPECT_GT(number("framesPerSecond"), 0);
    EXPECT_GT(number("audioFramesPlayed"), 48000);
    EXPECT_GT(number("tonePlayedHertz"), 100);
    EXPECT_NEAR(number("toneHeardHertz"), number("tonePlayedHertz"), 5) << "what the loudspeaker plays";
    EXPECT_GE(number("touchesSeenByDevice"), 2) << "down and up";
    EXPECT_EQ(number("keysSeenByDevice"), 4) << "two keys, each down and up";
    EXPECT_TRUE(report.value(QStringLiteral("clipboardMacToAndroid")).toBool());
    EXPECT_TRUE(report.value(QStringLiteral("clipboardAndroidToMac")).toBool());
    EXPECT_FALSE(report.value(QStringLiteral("resizeSeenByDevice")).toString().isEmpty());
    EXPECT_TRUE(report.value(QStringLiteral("deviceStoppedOnQuit")).toBool());

    // The touch went to 0.7 of the width and 0.62 of the height of a video area of 390 by 724 points; the device draws
    // a pink ring around it.
    const QImage window(folder.filePath(QStringLiteral("window.png")));
    ASSERT_EQ(window.size(), QSize(780, 1520));
    const QPoint touch(qRound(780 * 0.7), qRound(72 + 1448 * 0.62));
    int ring = 0;
    for (int dx = -60; dx <= 60; ++dx)
        ring += isNear(window.pixel(touch + QPoint(dx, 0)), qRgb(0xFF, 0x2D, 0x95)) ? 1 : 0;
    EXPECT_GT(ring, 5) << "no touch mark where the touch went";
    const QImage panel(folder.filePath(QStringLiteral("panel.png")));
    EXPECT_EQ(panel.size(), QSize(780, 1520));
}

} // namespace quillnest::driver
