// The readers against the platform's own tools, over the largest package that is at hand: what each of the two makes of
// every compiled XML file and of every value of the resource table.
#include "package/APKIconExtractor.h"
#include "package/APKManifestReader.h"
#include "package/BinaryXml.h"
#include "package/PackageDump.h"
#include "package/ResourceTable.h"
#include "platform/posix/ZipArchives.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <set>

using namespace quillnest;

namespace
{
const QString framework = QStringLiteral("/usr/share/android-framework-res/framework-res.apk");

std::vector<std::uint8_t> contents(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    const auto bytes = file.readAll();
    return {bytes.begin(), bytes.end()};
}

/// The first pool of a compiled XML file.
std::int64_t poolOf(ByteView file)
{
    return BinaryXml::u32(file, 2) & 0xFFFF;
}

/// Our value of an attribute against the tool's.
void expectSame(ByteView file, const BinaryXml::Attr &ours, const dump::XmlAttribute &theirs)
{
    EXPECT_EQ(ours.type, theirs.type);
    EXPECT_EQ(ours.string, theirs.raw);
    // The tool prints a text in place of its index.
    if (theirs.data)
        EXPECT_EQ(ours.data, *theirs.data);
    else
        EXPECT_EQ(BinaryXml::string(file, poolOf(file), ours.data), theirs.text);
}

/// What has been compared.
struct Count {
    std::size_t elements = 0;
    std::size_t attributes = 0;
    std::size_t overwritten = 0;
};

void compareElement(ByteView file, const BinaryXml::Element &ours, const dump::XmlElement &theirs, Count &count)
{
    ++count.elements;
    ASSERT_EQ(ours.name, theirs.name);
    // The tool tells namespaces apart; to us attributes of one name are one, and the last of them is the one.
    std::map<std::string, const dump::XmlAttribute *> lastOfName;
    for (const auto &attribute : theirs.attributes)
        lastOfName[attribute.name] = &attribute;
    count.overwritten += theirs.attributes.size() - lastOfName.size();
    ASSERT_EQ(ours.attrs.size(), lastOfName.size());
    for (const auto &[name, attribute] : lastOfName) {
        SCOPED_TRACE(name);
        const auto found = ours.attrs.find(name);
        ASSERT_NE(found, ours.attrs.end());
        expectSame(file, found->second, *attribute);
        ++count.attributes;
    }
}

void report(const std::string &line)
{
    std::printf("%s\n", line.c_str());
}
} // namespace

TEST(FrameworkPackage, everyXmlFileReadsAsThePlatformsToolReadsIt)
{
    const QTemporaryDir folder;
    dump::outputOf(
        QStringLiteral("unzip"),
        {QStringLiteral("-qq"), framework, QStringLiteral("*.xml"), QStringLiteral("-d"), folder.path()});
    QStringList files;
    for (QDirIterator all(folder.path(), QDir::Files, QDirIterator::Subdirectories); all.hasNext();)
        files.push_back(QDir(folder.path()).relativeFilePath(all.next()));
    files.sort();
    std::vector<std::string> unread;
    const auto trees = dump::xmlTrees(framework, files, unread);
    ASSERT_EQ(unread, std::vector<std::string>());
    ASSERT_EQ(trees.size(), static_cast<std::size_t>(files.size()));
    ASSERT_GT(trees.size(), 1000U);

    Count count;
    for (qsizetype i = 0; i < files.size(); ++i) {
        SCOPED_TRACE(files[i].toStdString());
        const auto bytes = contents(folder.filePath(files[i]));
        const auto ours = BinaryXml::elements(bytes);
        const auto &theirs = trees[static_cast<std::size_t>(i)];
        ASSERT_EQ(ours.size(), theirs.size());
        for (std::size_t e = 0; e < ours.size() && !HasFatalFailure(); ++e)
            compareElement(bytes, ours[e], theirs[e], count);
    }
    report(
        std::to_string(files.size()) + " files, " + std::to_string(count.elements) + " elements, "
        + std::to_string(count.attributes) + " attributes, " + std::to_string(count.overwritten) + " overwritten");
}

TEST(FrameworkPackage, everyValueOfTheResourceTableReadsAsThePlatformsToolReadsIt)
{
    ZipArchives archives;
    const auto bytes = APKIconExtractor::read(archives, framework.toStdString(), "resources.arsc")
                           .value_or(std::vector<std::uint8_t>());
    ASSERT_FALSE(bytes.empty());
    std::vector<std::string> unread;
    const auto table = dump::resourceTable(framework, unread);
    ASSERT_EQ(unread, std::vector<std::string>());
    ASSERT_GT(table.size(), 10000U);

    std::size_t compared = 0;
    std::size_t texts = 0;
    std::size_t bags = 0;
    for (const auto &[id, theirs] : table) {
        SCOPED_TRACE(QString::number(id, 16).toStdString());
        std::vector<ResourceTable::Entry> expected;
        for (const auto &value : theirs) {
            // A bag is no value: nothing is reported for it.
            bags += value.isBag ? 1 : 0;
            texts += value.text ? 1 : 0;
            if (!value.isBag)
                expected.push_back({value.density, value.text, value.type, value.data});
        }
        ASSERT_EQ(ResourceTable::entries(bytes, id), expected);
        compared += expected.size();
    }
    // One past the last id of each type holds nothing.
    std::set<std::uint32_t> types;
    for (const auto &[id, values] : table)
        types.insert(id >> 16);
    for (const auto type : types) {
        const auto past = std::prev(table.upper_bound((type << 16) | 0xFFFF))->first + 1;
        EXPECT_TRUE(ResourceTable::entries(bytes, past).empty()) << past;
    }
    report(
        std::to_string(table.size()) + " ids, " + std::to_string(compared) + " values, " + std::to_string(texts)
        + " texts among them, " + std::to_string(bags) + " bags left out");
}

TEST(SamplePackages, nameAndLabelAreThosePrintedByThePlatformsTool)
{
    ZipArchives archives;
    const auto quotedAfter = [](const std::string &text, const std::string &key) {
        const auto start = text.find(key + "'");
        if (start == std::string::npos)
            return std::string("nothing after ") + key;
        const auto from = start + key.size() + 1;
        return text.substr(from, text.find('\'', from) - from);
    };
    for (const auto *name : {"tide", "ember", "lantern"}) {
        SCOPED_TRACE(name);
        const auto path = QStringLiteral(SAMPLE_FOLDER "/") + QString::fromLatin1(name) + QStringLiteral(".apk");
        const auto badging
            = "\n" + dump::outputOf(QStringLiteral("aapt2"), {QStringLiteral("dump"), QStringLiteral("badging"), path});
        EXPECT_EQ(
            APKManifestReader::packageName(archives, path.toStdString()), quotedAfter(badging, "\npackage: name="));
        EXPECT_EQ(APKIconExtractor::label(archives, path.toStdString()), quotedAfter(badging, "\napplication-label:"));
    }
}
