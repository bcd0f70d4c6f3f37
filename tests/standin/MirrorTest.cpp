#include "support/StandinDevice.h"

#include <QJsonArray>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using test::StandinDevice;

namespace
{

const QString tide = u"app.quillnest.samples.tide"_s;

class Mirror : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(device.boot()); }

    QByteArray notifications() const { return device.shell(u"dumpsys notification --noredact"_s).out; }
    QByteArray media() const { return device.shell(u"dumpsys media_session"_s).out; }

    StandinDevice device;
};

} // namespace

TEST_F(Mirror, PostedNotificationsAreInTheDumpUntilTheyAreTakenBack)
{
    EXPECT_FALSE(notifications().contains("NotificationRecord("));
    ASSERT_EQ(device.control({u"notify"_s, tide, u"Hello (world)"_s, u"50% off %1"_s, u"4"_s}).status, 0);
    ASSERT_EQ(device.control({u"notify"_s, tide, u"Sync"_s, u"running"_s, u"5"_s, u"ongoing"_s}).status, 0);
    const QByteArray dump = notifications();
    EXPECT_TRUE(dump.contains("pkg=app.quillnest.samples.tide ")) << dump.constData();
    EXPECT_TRUE(dump.contains(" key=0|app.quillnest.samples.tide|4|null|10123: Notification("));
    EXPECT_TRUE(dump.contains("android.title=String (Hello (world))\n"));
    EXPECT_TRUE(dump.contains("android.text=String (50% off %1)\n"));
    EXPECT_EQ(dump.count("flags=0x62 "), 1);
    device.control({u"unnotify"_s, tide, u"4"_s});
    EXPECT_EQ(notifications().count("NotificationRecord("), 1);
}

TEST_F(Mirror, ASongIsInTheDumpAndTheMediaKeyPausesIt)
{
    device.adb({u"install"_s, u"--no-streaming"_s, u"-r"_s, test::sampleApk("tide")});
    device.shell(u"am start -n app.quillnest.samples.tide/.MainActivity"_s);
    device.control({u"media"_s, tide, u"Low Tide"_s, u"The Breakwaters"_s});
    EXPECT_TRUE(media().contains("package=app.quillnest.samples.tide\n"));
    EXPECT_TRUE(media().contains("state=PlaybackState {state=PLAYING(3),"));
    EXPECT_TRUE(media().contains("description=Low Tide, The Breakwaters, null"));
    device.shell(u"input keyevent 85"_s);
    EXPECT_TRUE(media().contains("state=PlaybackState {state=PAUSED(2),"));
    device.shell(u"input keyevent 87"_s);
    EXPECT_FALSE(media().contains("description=Low Tide,"));
    device.shell(u"am force-stop app.quillnest.samples.tide"_s);
    EXPECT_FALSE(media().contains("package="));
}

TEST_F(Mirror, TheMediaStoreKnowsTheFilesOfTheSharedStorage)
{
    const QString query = u"content query --uri content://media/external/file --projection _id --where "
                          "\"_data='/storage/emulated/0/Download/%1'\""_s;
    EXPECT_TRUE(device.shell(query.arg(u"note.txt"_s)).out.contains("No result found."));
    device.shell(u"echo hi > /sdcard/Download/note.txt"_s);
    EXPECT_TRUE(device.shell(query.arg(u"note.txt"_s)).out.startsWith("Row: 0 _id="));
}
