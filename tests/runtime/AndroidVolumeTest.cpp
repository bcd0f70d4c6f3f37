#include "RuntimeFixture.h"

#include "runtime/AndroidVolume.h"

using namespace quillnest;

namespace
{
class AndroidVolumeTest : public RuntimeFixture
{
protected:
    /// What the device's shell was told, one line for each command.
    QStringList shell() const
    {
        QStringList lines;
        for (const auto &call : fakes.processes->calls())
            lines.append(call.arguments.mid(3).join(QLatin1Char('|')));
        return lines;
    }

    std::shared_ptr<const AndroidCommands> commands = std::make_shared<const AndroidCommands>(fakes.platform, log);
};
} // namespace

TEST_F(AndroidVolumeTest, bothStreamsAreTurnedToTheTopOfTheirRange)
{
    fakes.processes->on(QStringLiteral("--stream 3 --get"), QByteArray("[V] volume is 5 in range [0..25]\n"));
    fakes.processes->on(QStringLiteral("--stream 5 --get"), QByteArray("[V] volume is 5 in range [0..7]\n"));
    AndroidVolume::maximize(*commands);
    EXPECT_EQ(
        shell(),
        (QStringList{
            QStringLiteral("cmd media_session volume --stream 3 --get"), QStringLiteral("cmd audio set-volume 3 25"),
            QStringLiteral("cmd media_session volume --stream 5 --get"), QStringLiteral("cmd audio set-volume 5 7")}));
    EXPECT_EQ(
        logLines(),
        (QStringList{QStringLiteral("volume: stream 3 set to 25"), QStringLiteral("volume: stream 5 set to 7")}));
}

TEST_F(AndroidVolumeTest, anOutputWithoutARangeLeavesThatStreamAlone)
{
    fakes.processes->on(QStringLiteral("--stream 3 --get"), QByteArray(150, 'x'));
    fakes.processes->on(QStringLiteral("--stream 5 --get"), QByteArray("range [0..7]"));
    AndroidVolume::maximize(*commands);
    EXPECT_EQ(fakes.processes->count(QStringLiteral("set-volume 3")), 0);
    EXPECT_EQ(fakes.processes->count(QStringLiteral("set-volume 5 7")), 1);
    EXPECT_EQ(logLines().first(), QStringLiteral("volume: could not read stream 3: ") + QString(100, QLatin1Char('x')));
}

TEST_F(AndroidVolumeTest, aRangeThatIsNoNumberIsLeftAlone)
{
    fakes.processes->on(QStringLiteral("--get"), QByteArray("[0..99999999999999999999]"));
    AndroidVolume::maximize(*commands);
    EXPECT_EQ(fakes.processes->count(QStringLiteral("set-volume")), 0);
}
