#include "platform/posix/ZipArchives.h"

#include "packages/ZipWriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/file.h>
#include <sys/stat.h>
#include <utime.h>

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

using namespace quillnest;
using standin::ZipWriter;

namespace
{

class ZipArchivesTest : public ::testing::Test
{
protected:
    ZipArchivesTest() { QDir().mkpath(target); }

    bool unpack(const QByteArray &bytes) { return unpackFile(write(QStringLiteral("a.zip"), bytes)); }
    bool unpack(const ZipWriter &zip) { return unpack(zip.archive()); }
    bool unpackFile(const QString &file) { return archives.unpack(file, target); }

    /// Refused, with nothing changed anywhere.
    void expectRefused(const ZipWriter &zip)
    {
        const auto before = everything();
        EXPECT_FALSE(unpack(zip));
        EXPECT_TRUE(everything() == before) << qPrintable(everything().join(u'\n'));
        EXPECT_FALSE(QFileInfo::exists(QStringLiteral("/escaped")));
    }

    QString write(const QString &name, const QByteArray &bytes) const
    {
        const auto path = QFileInfo(name).isAbsolute() ? name : outside.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return path;
    }
    QByteArray read(const QString &name) const
    {
        QFile file(target + QLatin1Char('/') + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
    }
    mode_t mode(const QString &name) const
    {
        struct stat facts = {};
        ::lstat(QFile::encodeName(target + QLatin1Char('/') + name).constData(), &facts);
        return facts.st_mode;
    }
    QString link(const QString &name) const
    {
        return QFile::decodeName(
            QByteArray::fromStdString(std::filesystem::read_symlink((target + QLatin1Char('/') + name).toStdString())));
    }

    /// Every path around and in the target but the archive's own, with what is in it.
    QStringList everything() const
    {
        QStringList result;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(around.path().toStdString())) {
            auto line = QString::fromStdString(entry.path().string());
            QFile file(line);
            if (entry.is_symlink())
                line += QStringLiteral(" -> ") + QString::fromStdString(std::filesystem::read_symlink(entry.path()));
            else if (file.open(QIODevice::ReadOnly))
                line += QStringLiteral(": ") + QString::fromLatin1(file.readAll().toHex());
            result.append(line);
        }
        result.sort();
        return result;
    }

    const QTemporaryDir around;
    const QTemporaryDir outside;
    const QString target = around.filePath(QStringLiteral("sdk"));
    ZipArchives archives;
};

} // namespace

TEST_F(ZipArchivesTest, filesFoldersLinksAndPermissions)
{
    ZipWriter zip;
    zip.addFolder("tools");
    zip.addFile("tools/adb", "program", 0755);
    zip.addFile("tools/notes with spaces \xC3\xBC.txt", QByteArray(100'000, 'x'), 0640);
    zip.addFolder("tools/empty");
    zip.addFile("tools/lib/deep/er/file", "deep");
    zip.addLink("tools/current", "lib/deep");
    zip.addLink("tools/lib/deep/up", "../../adb");
    zip.addFile("top", "alone");
    ASSERT_TRUE(unpack(zip));
    EXPECT_EQ(read(QStringLiteral("tools/adb")), "program");
    EXPECT_EQ(mode(QStringLiteral("tools/adb")), S_IFREG | 0755U);
    EXPECT_EQ(mode(QStringLiteral("tools/notes with spaces ü.txt")), S_IFREG | 0640U);
    EXPECT_EQ(read(QStringLiteral("tools/notes with spaces ü.txt")), QByteArray(100'000, 'x'));
    EXPECT_TRUE(S_ISDIR(mode(QStringLiteral("tools/empty"))));
    EXPECT_EQ(link(QStringLiteral("tools/current")), QStringLiteral("lib/deep"));
    EXPECT_EQ(read(QStringLiteral("tools/current/up")), "program");
    EXPECT_EQ(read(QStringLiteral("top")), "alone");
    EXPECT_EQ(QDir(around.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 1);
}

TEST_F(ZipArchivesTest, whatIsThereIsOverwrittenAndTheRestStays)
{
    write(target + QStringLiteral("/tools/adb"), "old");
    write(target + QStringLiteral("/tools/plugin/own"), "own");
    write(target + QStringLiteral("/tools/becomes-folder"), "file");
    write(target + QStringLiteral("/tools/becomes-file/inside"), "inside");
    write(target + QStringLiteral("/other/kept"), "kept");
    QFile::link(QStringLiteral("plugin/own"), target + QStringLiteral("/tools/link"));
    ZipWriter zip;
    zip.addFile("tools/adb", "new", 0755);
    zip.addFile("tools/plugin/theirs", "theirs");
    zip.addFile("tools/becomes-folder/inside", "1");
    zip.addFile("tools/becomes-file", "2");
    ASSERT_TRUE(unpack(zip));
    EXPECT_EQ(read(QStringLiteral("tools/adb")), "new");
    EXPECT_EQ(mode(QStringLiteral("tools/adb")), S_IFREG | 0755U);
    EXPECT_EQ(read(QStringLiteral("tools/plugin/own")), "own");
    EXPECT_EQ(read(QStringLiteral("tools/plugin/theirs")), "theirs");
    EXPECT_EQ(read(QStringLiteral("tools/becomes-folder/inside")), "1");
    EXPECT_EQ(read(QStringLiteral("tools/becomes-file")), "2");
    EXPECT_EQ(read(QStringLiteral("other/kept")), "kept");
    EXPECT_EQ(link(QStringLiteral("tools/link")), QStringLiteral("plugin/own"));
    EXPECT_EQ(QDir(around.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 1);
}

TEST_F(ZipArchivesTest, theSameTwiceIsTheSame)
{
    ZipWriter zip;
    zip.addFile("tools/adb", "program", 0755);
    zip.addFolder("tools/closed", 0555);
    zip.addFile("tools/closed/file", "closed");
    ASSERT_TRUE(unpack(zip));
    const auto once = everything();
    ASSERT_TRUE(unpack(zip));
    EXPECT_TRUE(everything() == once) << qPrintable(everything().join(u'\n'));
}

TEST_F(ZipArchivesTest, linksInTheTargetAreReplacedAndNotFollowed)
{
    const auto elsewhere = outside.filePath(QStringLiteral("elsewhere"));
    QDir().mkpath(elsewhere);
    const auto victim = write(QStringLiteral("victim"), "untouched");
    QFile::link(elsewhere, target + QStringLiteral("/tools"));
    QDir().mkpath(target + QStringLiteral("/inner"));
    QFile::link(elsewhere, target + QStringLiteral("/inner/folder"));
    QFile::link(victim, target + QStringLiteral("/inner/file"));
    ZipWriter zip;
    zip.addFile("tools/adb", "program");
    zip.addFile("inner/folder/x", "x");
    zip.addFile("inner/file", "file");
    ASSERT_TRUE(unpack(zip));
    EXPECT_TRUE(QDir(elsewhere).isEmpty());
    EXPECT_TRUE(S_ISDIR(mode(QStringLiteral("tools"))));
    EXPECT_TRUE(S_ISDIR(mode(QStringLiteral("inner/folder"))));
    EXPECT_TRUE(S_ISREG(mode(QStringLiteral("inner/file"))));
    QFile file(victim);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "untouched");
}

TEST_F(ZipArchivesTest, aTargetThatIsALinkIsUnpackedIntoWhereItLeads)
{
    const auto real = around.filePath(QStringLiteral("big/disk"));
    QDir().mkpath(real);
    const auto named = around.filePath(QStringLiteral("named"));
    QFile::link(real, named);
    ZipWriter zip;
    zip.addFile("tools/adb", "program");
    ASSERT_TRUE(archives.unpack(write(QStringLiteral("a.zip"), zip.archive()), named));
    EXPECT_TRUE(QFileInfo(named).isSymLink());
    EXPECT_TRUE(QFileInfo::exists(real + QStringLiteral("/tools/adb")));
}

TEST_F(ZipArchivesTest, namesThatLeadOutAreRefused)
{
    for (const QByteArray name :
         {"../escaped", "tools/../../escaped", "tools/../../../../../../../../escaped", "/escaped", "//escaped", "..",
          "tools/..", "../", "..\\escaped", "tools/../escaped"}) {
        SCOPED_TRACE(name.constData());
        ZipWriter zip;
        zip.addFile("tools/adb", "program");
        zip.addFile(name, "bad");
        expectRefused(zip);
    }
}

TEST_F(ZipArchivesTest, namesWithControlCharactersAreRefused)
{
    for (const QByteArray name : {"tools/a\nb", "tools/\x1b[2J", "a\x01/b", "tools/\x7f", "tools/a\tb"}) {
        SCOPED_TRACE(name.toHex().constData());
        ZipWriter zip;
        zip.addFile(name, "bad");
        expectRefused(zip);
    }
}

TEST_F(ZipArchivesTest, linksThatLeadOutAreRefused)
{
    for (const QByteArray aim :
         {"/etc/passwd", "..", "../..", "../../etc/passwd", "x/../../../etc", "/", "plugin/../../..", "a\nb"}) {
        SCOPED_TRACE(aim.constData());
        ZipWriter zip;
        zip.addFile("tools/adb", "program");
        zip.addLink("tools/link", aim);
        // From one folder down, a single step up stays inside.
        if (aim == "..") {
            EXPECT_TRUE(unpack(zip));
            QDir(target + QStringLiteral("/tools")).removeRecursively();
            ZipWriter top;
            top.addLink("link", aim);
            expectRefused(top);
        } else {
            expectRefused(zip);
        }
    }
}

TEST_F(ZipArchivesTest, linksThatLeadOutByWayOfOthersAreRefused)
{
    ZipWriter chain;
    chain.addFolder("a/b/c");
    chain.addLink("short", "a/b/c");
    // Inside as it is spelled, outside as it is followed.
    chain.addLink("out", "short/../../../../x");
    expectRefused(chain);
    ZipWriter mixed;
    mixed.addFile("a/b/c/file", "x");
    mixed.addLink("a/b/c/top", "../../..");
    mixed.addLink("sly", "a/b/c/top/..");
    expectRefused(mixed);
}

TEST_F(ZipArchivesTest, filesBelowALinkAreRefused)
{
    const auto elsewhere = outside.filePath(QStringLiteral("elsewhere"));
    QDir().mkpath(elsewhere);
    ZipWriter absolute;
    absolute.addLink("tools", QFile::encodeName(elsewhere));
    absolute.addFile("tools/escaped", "bad");
    expectRefused(absolute);
    ZipWriter inside;
    inside.addFolder("real");
    inside.addLink("tools", "real");
    inside.addFile("tools/file", "bad");
    expectRefused(inside);
    ZipWriter twice;
    twice.addLink("tools", QFile::encodeName(elsewhere + QStringLiteral("/escaped")));
    twice.addFile("tools", "bad");
    unpack(twice);
    EXPECT_TRUE(QDir(elsewhere).isEmpty());
    EXPECT_FALSE(QFileInfo(target + QStringLiteral("/tools")).isSymLink());
}

TEST_F(ZipArchivesTest, specialFilesComeAsNothingSpecial)
{
    ZipWriter zip;
    zip.add("tools/pipe", "x", S_IFIFO | 0644);
    zip.add("tools/setuid", "x", S_IFREG | 04755);
    unpack(zip);
    EXPECT_FALSE(S_ISFIFO(mode(QStringLiteral("tools/pipe"))));
    EXPECT_EQ(mode(QStringLiteral("tools/setuid")) & (S_ISUID | S_ISGID), 0U);
}

TEST_F(ZipArchivesTest, brokenArchivesAreRefused)
{
    ZipWriter zip;
    zip.addFile("tools/adb", QByteArray(5000, 'a') + "middle" + QByteArray(5000, 'b'), 0755);
    const auto good = zip.archive();
    for (const auto size : {qsizetype(0), qsizetype(10), good.size() / 2, good.size() - 1}) {
        EXPECT_FALSE(unpack(good.first(size))) << size;
    }
    auto changed = good;
    // In the packed content, behind the header and the name.
    changed[50] = static_cast<char>(changed[50] ^ 0x55);
    EXPECT_FALSE(unpack(changed));
    EXPECT_FALSE(unpack("no archive at all"));
    EXPECT_FALSE(archives.unpack(outside.filePath(QStringLiteral("none.zip")), target));
    EXPECT_FALSE(archives.unpack(write(QStringLiteral("good.zip"), good), around.filePath(QStringLiteral("none"))));
    EXPECT_TRUE(QDir(target).isEmpty());
    EXPECT_EQ(QDir(around.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 1);
}

TEST_F(ZipArchivesTest, anEncryptedArchiveAsksNobody)
{
    ZipWriter zip;
    zip.addFile("tools/adb", "program");
    auto bytes = zip.archive();
    // The bit of encryption, in the entry's header and in the directory.
    bytes[6] = static_cast<char>(bytes[6] | 1);
    const auto line = bytes.indexOf("PK\x01\x02");
    bytes[line + 8] = static_cast<char>(bytes[line + 8] | 1);
    EXPECT_FALSE(unpack(bytes));
    EXPECT_TRUE(QDir(target).isEmpty());
}

TEST_F(ZipArchivesTest, whatIsPackedIsWhatIsUnpacked)
{
    const auto content = outside.filePath(QStringLiteral("content"));
    write(content + QStringLiteral("/info.json"), "{}");
    write(content + QStringLiteral("/.hidden"), "hidden");
    write(content + QStringLiteral("/deep/er/tool"), QByteArray(300'000, 'x'));
    ::chmod(QFile::encodeName(content + QStringLiteral("/deep/er/tool")).constData(), 0750);
    QDir().mkpath(content + QStringLiteral("/empty"));
    QFile::link(QStringLiteral("deep/er"), content + QStringLiteral("/link"));
    const auto archive = outside.filePath(QStringLiteral("packed/a b \u00fc.zip"));
    QDir().mkpath(QFileInfo(archive).path());
    ASSERT_TRUE(archives.packFolder(content, archive));
    EXPECT_EQ(
        QDir(QFileInfo(archive).path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 1);
    ASSERT_TRUE(unpackFile(archive));
    EXPECT_EQ(read(QStringLiteral("info.json")), "{}");
    EXPECT_EQ(read(QStringLiteral(".hidden")), "hidden");
    EXPECT_EQ(read(QStringLiteral("deep/er/tool")), QByteArray(300'000, 'x'));
    EXPECT_EQ(mode(QStringLiteral("deep/er/tool")), S_IFREG | 0750U);
    EXPECT_TRUE(S_ISDIR(mode(QStringLiteral("empty"))));
    EXPECT_EQ(link(QStringLiteral("link")), QStringLiteral("deep/er"));
}

TEST_F(ZipArchivesTest, aPackedArchiveTakesThePlaceOfAnOlderOneOrChangesNothing)
{
    const auto archive = write(QStringLiteral("backups/a.zip"), "an older one");
    const auto bytes = [&archive] {
        QFile file(archive);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const auto one = write(QStringLiteral("one"), "1");
    const auto none = outside.filePath(QStringLiteral("none"));
    const auto pipe = outside.filePath(QStringLiteral("pipe"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_FALSE(archives.pack({{QStringLiteral("one"), one}, {QStringLiteral("none"), none}}, archive));
    EXPECT_FALSE(archives.pack({{QStringLiteral("one"), one}, {QStringLiteral("pipe"), pipe}}, archive));
    EXPECT_FALSE(archives.pack({{QStringLiteral("one"), one}, {QStringLiteral("one"), one}}, archive));
    EXPECT_FALSE(archives.pack({}, archive));
    EXPECT_FALSE(archives.packFolder(none, archive));
    EXPECT_FALSE(archives.pack({{QStringLiteral("one"), one}}, outside.filePath(QStringLiteral("none/a.zip"))));
    EXPECT_EQ(bytes(), "an older one");
    EXPECT_TRUE(archives.pack({{QStringLiteral("base.apk"), one}}, archive));
    EXPECT_TRUE(bytes().startsWith("PK\x03\x04"));
    EXPECT_EQ(
        QDir(outside.filePath(QStringLiteral("backups")))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
            .size(),
        1);
    EXPECT_EQ(archives.open(archive.toStdString())->names(), std::vector<std::string_view>{"base.apk"});
}

TEST_F(ZipArchivesTest, entriesThatLieOverOneAnotherAreRefused)
{
    ZipWriter zip;
    zip.addFile("tools/a", QByteArray(100'000, 'a'));
    auto bytes = zip.archive();
    // The one entry, listed many times.
    const auto directory = bytes.indexOf("PK\x01\x02");
    const auto end = bytes.lastIndexOf("PK\x05\x06");
    const auto line = bytes.sliced(directory, end - directory);
    QByteArray listed;
    for (char i = 0; i < 100; ++i)
        listed += QByteArray(line).replace("tools/a", QByteArray("tools/") + static_cast<char>(' ' + i));
    auto tail = bytes.sliced(end);
    const auto size = listed.size();
    tail[8] = tail[10] = 100;
    for (int i = 0; i < 4; ++i)
        tail[12 + i] = static_cast<char>(size >> (8 * i));
    EXPECT_FALSE(unpack(bytes.first(directory) + listed.replace("tools//", "tools/_") + tail));
    EXPECT_TRUE(QDir(target).isEmpty());
}

TEST_F(ZipArchivesTest, whatAKilledRunLeftGoesWithTheNext)
{
    const auto left = around.filePath(QStringLiteral(".quillnest-unpack-killed"));
    write(left + QStringLiteral("/lock"), {});
    write(left + QStringLiteral("/tree/tools/adb"), "half");
    ::chmod(QFile::encodeName(left + QStringLiteral("/tree/tools")).constData(), 0500);
    const auto early = around.filePath(QStringLiteral(".quillnest-unpack-early"));
    QDir().mkpath(early);
    const utimbuf longAgo{1'000'000'000, 1'000'000'000};
    ::utime(QFile::encodeName(early).constData(), &longAgo);
    const auto strange = around.filePath(QStringLiteral(".quillnest-other"));
    QDir().mkpath(strange);
    ZipWriter zip;
    zip.addFile("tools/adb", "program");
    ASSERT_TRUE(unpack(zip));
    EXPECT_FALSE(QFileInfo::exists(left));
    EXPECT_FALSE(QFileInfo::exists(early));
    EXPECT_TRUE(QFileInfo::exists(strange));
}

TEST_F(ZipArchivesTest, whatSomebodyWorksInStays)
{
    const auto busy = around.filePath(QStringLiteral(".quillnest-unpack-busy"));
    const auto lock = write(busy + QStringLiteral("/lock"), {});
    const int descriptor = ::open(QFile::encodeName(lock).constData(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(descriptor, LOCK_EX | LOCK_NB), 0);
    const auto begun = around.filePath(QStringLiteral(".quillnest-unpack-begun"));
    QDir().mkpath(begun);
    ZipWriter zip;
    zip.addFile("tools/adb", "program");
    EXPECT_TRUE(unpack(zip));
    EXPECT_TRUE(QFileInfo::exists(lock));
    EXPECT_TRUE(QFileInfo::exists(begun));
    ::close(descriptor);
}

TEST_F(ZipArchivesTest, whoeverLooksFindsATopLevelFolderWhole)
{
    // Two versions of a tool of two files that only work together.
    const auto version = [](char letter) {
        ZipWriter zip;
        for (int i = 0; i < 40; ++i)
            zip.addFile("tools/part" + QByteArray::number(i), QByteArray(2000, letter));
        return zip.archive();
    };
    const auto first = write(QStringLiteral("first.zip"), version('a'));
    const auto second = write(QStringLiteral("second.zip"), version('b'));
    ASSERT_TRUE(unpackFile(first));
    std::atomic<bool> ended = false;
    int looks = 0;
    int mixed = 0;
    std::thread looking([&] {
        while (!ended) {
            // By a descriptor: what is read belongs to one and the same folder.
            const auto path = QFile::encodeName(target + QStringLiteral("/tools"));
            const int folder = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            if (folder < 0) {
                ++mixed;
                continue;
            }
            QByteArray letters;
            for (const auto *name : {"part0", "part39"}) {
                const int part = ::openat(folder, name, O_RDONLY | O_CLOEXEC);
                char letter = '?';
                if (part >= 0 && ::read(part, &letter, 1) == 1)
                    letters += letter;
                ::close(part);
            }
            ::close(folder);
            // A folder that is on its way out may have lost its files, but never has another's.
            if (letters == "ab" || letters == "ba")
                ++mixed;
            ++looks;
        }
    });
    for (int i = 0; i < 10; ++i)
        EXPECT_TRUE(unpackFile(i % 2 == 0 ? second : first));
    ended = true;
    looking.join();
    EXPECT_EQ(mixed, 0);
    EXPECT_GT(looks, 10);
}
