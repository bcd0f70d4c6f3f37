#include "support/StandinDevice.h"

#include <QDateTime>
#include <QFile>
#include <QRandomGenerator>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using test::Outcome;
using test::StandinDevice;

namespace
{

QByteArray randomBytes(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(7);
    for (char &byte : bytes)
        byte = static_cast<char>(generator.bounded(256));
    return bytes;
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write(bytes);
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

class Files : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(device.boot()); }

    StandinDevice device;
};

} // namespace

TEST_F(Files, FiveMegabytesComeBackAsTheyWent)
{
    const QByteArray bytes = randomBytes(5000000);
    const QString there = device.folder() + u"/there"_s;
    const QString back = device.folder() + u"/back"_s;
    write(there, bytes);
    ASSERT_EQ(device.adb({u"push"_s, there, u"/sdcard/Download/big file"_s}).status, 0);
    EXPECT_EQ(device.shell(u"wc -c < '/sdcard/Download/big file'"_s).out.trimmed(), "5000000");
    ASSERT_EQ(device.adb({u"pull"_s, u"/sdcard/Download/big file"_s, back}).status, 0);
    EXPECT_TRUE(read(back) == bytes);
}

TEST_F(Files, APushIntoAFolderKeepsTheNameAndTheTimeAndMakesFolders)
{
    const QString file = device.folder() + u"/letter.txt"_s;
    write(file, "dear reader\n");
    QFile touched(file);
    ASSERT_TRUE(touched.open(QFile::ReadWrite));
    touched.setFileTime(QDateTime::fromSecsSinceEpoch(1600000000), QFileDevice::FileModificationTime);
    touched.close();
    ASSERT_EQ(device.adb({u"push"_s, file, u"/sdcard/Download"_s}).status, 0);
    EXPECT_EQ(device.shell(u"cat /sdcard/Download/letter.txt"_s).out, "dear reader\n");
    EXPECT_EQ(device.shell(u"stat -c %Y /sdcard/Download/letter.txt"_s).out.trimmed(), "1600000000");
    ASSERT_EQ(device.adb({u"push"_s, file, u"/data/local/tmp/a/b/c.txt"_s}).status, 0);
    EXPECT_EQ(device.shell(u"cat /data/local/tmp/a/b/c.txt"_s).out, "dear reader\n");
}

TEST_F(Files, ANameMayBeAsLongAsAnyAndNoLonger)
{
    const QString file = device.folder() + u"/letter.txt"_s;
    write(file, "dear reader\n");
    const QString longest = u"/data/local/tmp/"_s + QString(255, u'n');
    ASSERT_EQ(device.adb({u"push"_s, file, longest}).status, 0);
    EXPECT_EQ(device.shell(u"cat "_s + longest).out, "dear reader\n");
    const Outcome outcome = device.adb({u"push"_s, file, longest + u'n'});
    EXPECT_NE(outcome.status, 0);
    EXPECT_TRUE(outcome.all().contains("File name too long")) << outcome.all().constData();
    EXPECT_EQ(device.shell(u"ls -A /data/local/tmp | grep -c partial"_s).out.trimmed(), "0");
}

TEST_F(Files, AFolderIsPulledWhole)
{
    device.shell(
        u"mkdir -p /sdcard/Documents/deep; echo one > /sdcard/Documents/1; echo two > /sdcard/Documents/deep/2"_s);
    ASSERT_EQ(device.adb({u"pull"_s, u"/sdcard/Documents"_s, device.folder() + u"/docs"_s}).status, 0);
    EXPECT_EQ(read(device.folder() + u"/docs/1"_s), "one\n");
    EXPECT_EQ(read(device.folder() + u"/docs/deep/2"_s), "two\n");
}

TEST_F(Files, MissingFilesAndBadTargetsAreRefusedWithWords)
{
    const Outcome pull = device.adb({u"pull"_s, u"/sdcard/nothing"_s, device.folder() + u"/x"_s});
    EXPECT_NE(pull.status, 0);
    EXPECT_TRUE(pull.all().contains("No such file or directory")) << pull.all().constData();
    const QString file = device.folder() + u"/f"_s;
    write(file, "x");
    EXPECT_NE(device.adb({u"push"_s, file, u"/dev/null/below"_s}).status, 0);
}

TEST_F(Files, LinksNeverLeadOutOfTheTree)
{
    device.shell(
        u"ln -s /../../../../etc/hostname /sdcard/way-out; ln -s ../../../../../../../etc/passwd /sdcard/other"_s);
    EXPECT_NE(device.adb({u"pull"_s, u"/sdcard/way-out"_s, device.folder() + u"/x"_s}).status, 0);
    EXPECT_NE(device.adb({u"pull"_s, u"/sdcard/other"_s, device.folder() + u"/y"_s}).status, 0);
    EXPECT_FALSE(QFile::exists(device.folder() + u"/y"_s));
}

TEST_F(Files, ReverseTunnelsAreListedAndRemoved)
{
    ASSERT_EQ(device.adb({u"reverse"_s, u"localabstract:quill"_s, u"tcp:4242"_s}).status, 0);
    EXPECT_EQ(device.adb({u"reverse"_s, u"--list"_s}).out.trimmed(), "(reverse) localabstract:quill tcp:4242");
    EXPECT_EQ(device.adb({u"reverse"_s, u"--remove"_s, u"localabstract:quill"_s}).status, 0);
    EXPECT_EQ(device.adb({u"reverse"_s, u"--list"_s}).out.trimmed(), "");
    EXPECT_NE(device.adb({u"reverse"_s, u"--remove"_s, u"localabstract:quill"_s}).status, 0);
}
