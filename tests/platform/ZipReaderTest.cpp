// Entries of archives as they come: what an honest tool packs, and what a hostile one may.
#include "platform/posix/ZipReader.h"

#include "packages/ZipWriter.h"

#include <QFile>
#include <QTemporaryDir>

#include <chrono>
#include <future>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

using namespace quillnest;
using standin::ZipWriter;

namespace
{

constexpr std::size_t mebibyte = 1024 * 1024;

class ZipReaderTest : public ::testing::Test
{
protected:
    std::unique_ptr<ZipReader> open(const QByteArray &bytes)
    {
        m_path = folder.filePath(QStringLiteral("%1.zip").arg(++m_count));
        QFile file(m_path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        file.close();
        return ZipReader::open(m_path.toStdString());
    }

    /// What an entry of an archive holds; "(none)" if that can't be opened.
    std::string read(const QByteArray &bytes, const std::string &name, std::size_t limit = mebibyte)
    {
        const auto archive = open(bytes);
        return archive ? text(archive->read(name, limit)) : "(none)";
    }

    static std::string text(const OpenArchive::Bytes &bytes) { return {bytes.begin(), bytes.end()}; }

    const QTemporaryDir folder;
    QString m_path;

private:
    int m_count = 0;
};

/// An archive of two entries, "a" packed and "b" behind it, to be changed by the byte.
struct TwoEntries {
    TwoEntries()
    {
        ZipWriter zip;
        zip.addFile("a", content);
        zip.addFile("b", "second");
        bytes = zip.archive();
        directory = bytes.indexOf("PK\x01\x02");
        end = bytes.lastIndexOf("PK\x05\x06");
    }

    /// Numbers of the first entry, in its own head and in the directory.
    void set16(qsizetype own, qsizetype listed, quint16 value)
    {
        put(own, value, 2);
        put(directory + listed, value, 2);
    }
    void set32(qsizetype own, qsizetype listed, quint32 value)
    {
        put(own, value, 4);
        put(directory + listed, value, 4);
    }
    void put(qsizetype at, quint64 value, int width)
    {
        for (int i = 0; i < width; ++i)
            bytes[at + i] = static_cast<char>(value >> (8 * i));
    }

    const QByteArray content = QByteArray(20'000, 'a') + "middle" + QByteArray(20'000, 'z');
    QByteArray bytes;
    qsizetype directory;
    qsizetype end;
};

/// Only a directory: entries of these names that hold nothing.
QByteArray directoryOf(const std::vector<QByteArray> &names)
{
    const auto number = [](quint64 value, int width) {
        QByteArray bytes;
        for (int i = 0; i < width; ++i)
            bytes += static_cast<char>(value >> (8 * i));
        return bytes;
    };
    QByteArray listed;
    for (const auto &name : names) {
        listed += "PK\x01\x02" + number(20, 2) + number(10, 2) + QByteArray(20, '\0');
        listed += number(static_cast<quint64>(name.size()), 2) + QByteArray(16, '\0') + name;
    }
    const auto count = number(names.size(), 2);
    return listed + QByteArray("PK\x05\x06") + QByteArray(4, '\0') + count + count
        + number(static_cast<quint64>(listed.size()), 4) + QByteArray(6, '\0');
}

} // namespace

TEST_F(ZipReaderTest, entriesAreReadByTheirNamesInOneOpenArchive)
{
    const TwoEntries two;
    const auto archive = open(two.bytes);
    ASSERT_TRUE(archive);
    EXPECT_EQ(archive->names(), (std::vector<std::string_view>{"a", "b"}));
    EXPECT_EQ(text(archive->read("b", mebibyte)), "second");
    EXPECT_EQ(text(archive->read("a", mebibyte)), two.content.toStdString());
    EXPECT_EQ(text(archive->read("b", mebibyte)), "second");
    EXPECT_EQ(text(archive->read("A", mebibyte)), "");
    EXPECT_EQ(text(archive->read("", mebibyte)), "");
    EXPECT_EQ(text(archive->read("*", mebibyte)), "");
}

TEST_F(ZipReaderTest, theLimitIsThatOfWhatComesOut)
{
    const TwoEntries two;
    const auto size = static_cast<std::size_t>(two.content.size());
    EXPECT_EQ(read(two.bytes, "a", size).size(), size);
    EXPECT_EQ(read(two.bytes, "a", size - 1), "");
    EXPECT_EQ(read(two.bytes, "a", 0), "");
    EXPECT_EQ(read(two.bytes, "b", 6), "second");
}

TEST_F(ZipReaderTest, whatIsReadTakesNoMoreRoomThanTheLimit)
{
    TwoEntries two;
    const auto archive = open(two.bytes);
    ASSERT_TRUE(archive);
    const auto size = static_cast<std::size_t>(two.content.size());
    EXPECT_LE(archive->read("a", size + 10).capacity(), size + 10);
}

TEST_F(ZipReaderTest, entriesOfOneNameFollowOneAnotherWithinOneLimit)
{
    ZipWriter zip;
    zip.addFile("a", "first ");
    zip.addFile("b", "other");
    zip.addFile("a", "second");
    EXPECT_EQ(read(zip.archive(), "a"), "first second");
    EXPECT_EQ(read(zip.archive(), "a", 12), "first second");
    EXPECT_EQ(read(zip.archive(), "a", 11), "");
    EXPECT_EQ(open(zip.archive())->names().size(), 3U);
}

TEST_F(ZipReaderTest, anEncryptedEntryIsAbsentAndTheOthersAreNot)
{
    TwoEntries two;
    two.set16(6, 8, 1);
    EXPECT_EQ(read(two.bytes, "a"), "");
    EXPECT_EQ(read(two.bytes, "b"), "second");
}

TEST_F(ZipReaderTest, sizesThatLieChangeNothingOfWhatComesOut)
{
    for (const quint32 size : {0U, 1U, 0x7FFFFFFFU, 0xFFFFFFF0U}) {
        TwoEntries two;
        two.set32(22, 24, size);
        EXPECT_EQ(read(two.bytes, "a"), two.content.toStdString()) << size;
    }
    TwoEntries two;
    two.set32(18, 20, 0x7FFFFFF0);
    EXPECT_EQ(read(two.bytes, "a"), two.content.toStdString());
}

TEST_F(ZipReaderTest, ofABrokenEntryComesWhatLiesBeforeTheBreak)
{
    TwoEntries sum;
    sum.set32(14, 16, 0x12345678);
    EXPECT_EQ(read(sum.bytes, "a"), sum.content.toStdString());
    // As the archive was packed only in part.
    TwoEntries cut;
    cut.set32(18, 20, 40);
    const auto part = read(cut.bytes, "a");
    EXPECT_LT(part.size(), static_cast<std::size_t>(cut.content.size()));
    EXPECT_TRUE(cut.content.toStdString().starts_with(part));
    EXPECT_FALSE(part.empty());
    EXPECT_EQ(read(cut.bytes, "b"), "second");
}

TEST_F(ZipReaderTest, waysOfPackingThatNoPackageUsesAreNotTried)
{
    // Of the last of these the library would allocate what the entry tells it.
    for (const auto method : std::initializer_list<quint16>{1, 9, 12, 14, 93, 95}) {
        TwoEntries two;
        two.set16(8, 10, method);
        EXPECT_EQ(read(two.bytes, "a"), "") << method;
        EXPECT_EQ(read(two.bytes, "b"), "second") << method;
    }
}

TEST_F(ZipReaderTest, theDirectoryTellsHowAnEntryIsPacked)
{
    TwoEntries two;
    two.put(8, 12, 2);
    EXPECT_EQ(read(two.bytes, "a"), two.content.toStdString());
}

TEST_F(ZipReaderTest, bytesBeforeAnArchiveOpenNothing)
{
    const TwoEntries two;
    EXPECT_FALSE(open("#!/bin/sh\n" + two.bytes));
}

TEST_F(ZipReaderTest, anEntryOfTheMethodForEncryptionThatLacksItsFieldOpensNothing)
{
    TwoEntries two;
    two.set16(8, 10, 99);
    EXPECT_FALSE(open(two.bytes));
}

TEST_F(ZipReaderTest, whatIsNoArchiveIsNotOpened)
{
    const TwoEntries two;
    EXPECT_FALSE(open(""));
    EXPECT_FALSE(open("no archive at all"));
    EXPECT_FALSE(open(two.bytes.first(two.bytes.size() - 1)));
    EXPECT_FALSE(open(two.bytes.first(two.directory + 20)));
    EXPECT_FALSE(open(two.bytes.first(two.bytes.size() / 2)));
    EXPECT_FALSE(ZipReader::open(folder.filePath(QStringLiteral("none")).toStdString()));
    EXPECT_FALSE(ZipReader::open(folder.path().toStdString()));
    EXPECT_FALSE(ZipReader::open(std::string()));
}

TEST_F(ZipReaderTest, aPipeInAnArchivesPlaceHoldsUpNobody)
{
    const auto path = folder.filePath(QStringLiteral("pipe.apk")).toStdString();
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    auto opening = std::async(std::launch::async, [&path] { return ZipReader::open(path) != nullptr; });
    const bool isDone = opening.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    EXPECT_TRUE(isDone) << "it waits for somebody to write";
    if (!isDone)
        ::close(::open(path.c_str(), O_WRONLY | O_NONBLOCK));
    EXPECT_FALSE(opening.get());
}

TEST_F(ZipReaderTest, aCountThatLiesOpensNothing)
{
    for (const quint64 count : {0ULL, 1ULL, 3ULL, 0xFFF0ULL}) {
        TwoEntries two;
        two.put(two.end + 8, count, 2);
        two.put(two.end + 10, count, 2);
        const auto archive = open(two.bytes);
        EXPECT_TRUE(!archive || archive->names().size() <= 2) << count;
    }
}

TEST_F(ZipReaderTest, theLongFormOfAnEndIsReadAndItsCountsAreNotBelieved)
{
    const auto longForm = [this](quint64 count, quint64 size) {
        TwoEntries two;
        const auto listed = two.end - two.directory;
        QByteArray end("PK\x06\x06");
        const auto add = [&end](quint64 value, int width) {
            for (int i = 0; i < width; ++i)
                end += static_cast<char>(value >> (8 * i));
        };
        add(44, 8);
        add(45, 2);
        add(45, 2);
        add(0, 8);
        add(count, 8);
        add(count, 8);
        add(size == 0 ? static_cast<quint64>(listed) : size, 8);
        add(static_cast<quint64>(two.directory), 8);
        end += "PK\x06\x07";
        add(0, 4);
        add(static_cast<quint64>(two.end), 8);
        add(1, 4);
        end += "PK\x05\x06";
        add(0, 4);
        add(0xFFFFFFFF, 4);
        add(0xFFFFFFFF, 4);
        add(0xFFFFFFFF, 4);
        add(0, 2);
        return open(two.bytes.first(two.end) + end);
    };
    const auto honest = longForm(2, 0);
    ASSERT_TRUE(honest);
    EXPECT_EQ(text(honest->read("b", mebibyte)), "second");
    for (const quint64 count : {quint64{3}, quint64{1} << 20, quint64{1} << 32, ~quint64{0}}) {
        EXPECT_FALSE(longForm(count, 0)) << count;
        EXPECT_FALSE(longForm(count, quint64{1} << 40)) << count;
    }
}

TEST_F(ZipReaderTest, aDirectoryOfHonestNamesIsReadHoweverLong)
{
    std::vector<QByteArray> names;
    for (int i = 0; i < 60'000; ++i)
        names.push_back("res/drawable-xhdpi-v4/abc_" + QByteArray::number(i) + ".png");
    const auto archive = open(directoryOf(names));
    ASSERT_TRUE(archive);
    EXPECT_EQ(archive->names().size(), names.size());
}

TEST_F(ZipReaderTest, namesThatAreChosenToCrowdInTheLibrarysTableOpenNothing)
{
    // Each pair of letters weighs the same in the library's sum; it would take ten seconds over these.
    std::vector<QByteArray> names;
    for (unsigned i = 0; i < 60'000; ++i) {
        QByteArray name;
        for (unsigned bit = 0; bit < 16; ++bit)
            name += (i >> bit) % 2 == 0 ? "Ez" : "FY";
        names.push_back(name);
    }
    const auto started = std::chrono::steady_clock::now();
    EXPECT_FALSE(open(directoryOf(names)));
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(5));
}

TEST_F(ZipReaderTest, aDirectoryLongerThanAnyRealOneOpensNothing)
{
    std::vector<QByteArray> names;
    for (int i = 0; i < 300; ++i)
        names.push_back(QByteArray::number(i) + QByteArray(60'000, 'x'));
    EXPECT_FALSE(open(directoryOf(names)));
    names.resize(200);
    EXPECT_TRUE(open(directoryOf(names)));
}

TEST_F(ZipReaderTest, anArchiveWithManyEndsOpensNothing)
{
    // The library would look at the directory for each end, of which a comment may hold thousands.
    const auto withEnds = [](int count) {
        const auto comment = (QByteArray("PK\x05\x06") + QByteArray(18, '\xFF')).repeated(count - 1);
        auto bytes = directoryOf({"a", "b"});
        bytes.chop(2);
        bytes += static_cast<char>(comment.size());
        bytes += static_cast<char>(comment.size() >> 8);
        return bytes + comment;
    };
    EXPECT_TRUE(open(withEnds(16)));
    EXPECT_FALSE(open(withEnds(17)));
    EXPECT_FALSE(open(withEnds(2900)));
}

TEST_F(ZipReaderTest, aDirectoryOfMoreEntriesThanAnyRealOneOpensNothing)
{
    const auto longForm = [](int count) {
        std::vector<QByteArray> names;
        for (int i = 0; i < count; ++i)
            names.push_back("n" + QByteArray::number(i));
        auto bytes = directoryOf(names);
        bytes.chop(22);
        const auto size = static_cast<quint64>(bytes.size());
        const auto add = [&bytes](quint64 value, int width) {
            for (int i = 0; i < width; ++i)
                bytes += static_cast<char>(value >> (8 * i));
        };
        bytes += "PK\x06\x06";
        add(44, 8);
        add(45, 4);
        add(0, 8);
        add(static_cast<quint64>(count), 8);
        add(static_cast<quint64>(count), 8);
        add(size, 8);
        add(0, 8);
        bytes += "PK\x06\x07";
        add(0, 4);
        add(size, 8);
        add(1, 4);
        bytes += "PK\x05\x06";
        add(0, 4);
        add(~quint64{0}, 8);
        add(0xFFFFFFFF, 4);
        add(0, 2);
        return bytes;
    };
    EXPECT_TRUE(open(longForm(70'000)));
    EXPECT_FALSE(open(longForm(80'000)));
}

TEST_F(ZipReaderTest, manyRecordsOfOneNameTakeNoLongerThanOne)
{
    // One entry of empty blocks, which takes time and holds nothing, and a directory that names it again and again.
    TwoEntries two;
    QByteArray blocks;
    for (int i = 0; i < 3 * 1024 * 1024; ++i)
        blocks += QByteArray("\x00\x00\x00\xFF\xFF", 5);
    two.bytes = two.bytes.first(31) + blocks + two.bytes.sliced(two.directory);
    two.directory = 31 + blocks.size();
    two.set32(18, 20, static_cast<quint32>(blocks.size()));
    const auto record = two.bytes.mid(two.directory, 46 + static_cast<std::uint8_t>(two.bytes[two.directory + 28]));
    const auto end = two.bytes.last(22);
    constexpr int count = 5000;
    two.bytes.truncate(two.directory);
    for (int i = 0; i < count; ++i)
        two.bytes += record;
    two.bytes += end;
    two.put(two.bytes.size() - 14, count, 2);
    two.put(two.bytes.size() - 12, count, 2);
    two.put(two.bytes.size() - 10, static_cast<quint64>(record.size() * count), 4);
    two.put(two.bytes.size() - 6, static_cast<quint64>(two.directory), 4);
    const auto archive = open(two.bytes);
    ASSERT_TRUE(archive);
    ASSERT_EQ(archive->names().size(), static_cast<std::size_t>(count));
    // Each of them would be read to its end: that is many minutes, and the test's time is up.
    EXPECT_TRUE(archive->read(archive->names().front(), 16 * 1024 * 1024).empty());
}

TEST_F(ZipReaderTest, anEntryThatIsLongToReadAndHoldsNothingEnds)
{
    // Empty blocks, five bytes each.
    TwoEntries two;
    QByteArray blocks;
    for (int i = 0; i < 4 * 1024 * 1024; ++i)
        blocks += QByteArray("\x00\x00\x00\xFF\xFF", 5);
    auto bytes = two.bytes.first(31) + blocks + two.bytes.sliced(two.directory);
    const auto place = 31 + blocks.size();
    two.bytes = bytes;
    two.directory = place;
    two.set32(18, 20, static_cast<quint32>(blocks.size()));
    two.put(two.bytes.size() - 6, static_cast<quint64>(place), 4);
    const auto archive = open(two.bytes);
    ASSERT_TRUE(archive);
    const auto taken = [&archive] {
        std::size_t read = 0;
        return archive->stream(0, 1000, [&read](std::span<const std::uint8_t> piece) {
            read += piece.size();
            return true;
        });
    };
    EXPECT_EQ(taken(), ZipReader::Ending::broken);
}

TEST_F(ZipReaderTest, patternsFindTheInformationFilesOfApps)
{
    ZipWriter zip;
    zip.addFile("Payload/Moon.app/Info.plist", "moon;");
    zip.addFile("Payload/Moon.app/Watch/Sun.app/Info.plist", "sun;");
    zip.addFile("Payload/Info.plist", "none;");
    zip.addFile("payload/Moon.app/Info.plist", "small;");
    zip.addFile("Payload/Moon.app/Info.plist.bak", "old;");
    const auto archive = open(zip.archive());
    const auto found = [&](const char *pattern) { return text(archive->readMatching(pattern, 100)); };
    // A star passes slashes, as it does for the tools that people know.
    EXPECT_EQ(found("Payload/*.app/Info.plist"), "moon;sun;");
    EXPECT_EQ(found("Payload/*"), "moon;sun;none;old;");
    EXPECT_EQ(found("?ayload/Moon.app/Info.plist"), "moon;small;");
    EXPECT_EQ(found("Payload/Moon.app/Info.plist"), "moon;");
    EXPECT_EQ(found("*Sun*plist"), "sun;");
    EXPECT_EQ(found("Payload/????.app/Info.plist"), "moon;");
    EXPECT_EQ(found("Payload/*.app"), "");
    EXPECT_EQ(found(""), "");
    EXPECT_EQ(text(archive->readMatching("*", 10)), "");
}

TEST_F(ZipReaderTest, aPatternOfManyStarsEnds)
{
    ZipWriter zip;
    zip.addFile(QByteArray(60'000, 'a'), "x");
    const auto archive = open(zip.archive());
    std::string pattern;
    for (int i = 0; i < 2000; ++i)
        pattern += "a*";
    EXPECT_EQ(text(archive->readMatching(pattern + "b", 100)), "");
    EXPECT_EQ(text(archive->readMatching(pattern, 100)), "x");
}
