#include "fakes/FakeArchives.h"
#include "package/APKIconExtractor.h"
#include "package/APKManifestReader.h"
#include "package/PackageBuilder.h"
#include "package/PackageLimits.h"
#include "platform/posix/ZipArchives.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>

using namespace quillnest;
using namespace quillnest::build;

namespace
{
Blob blob(const char *text)
{
    const std::string bytes(text);
    return {bytes.begin(), bytes.end()};
}

/// Real archives, made by "zip".
class PackageFiles : public ::testing::Test
{
protected:
    /// Makes an archive of files at a path below the temporary folder; returns its absolute path.
    std::string archive(const QString &relative, const std::map<QString, Blob> &files)
    {
        const QTemporaryDir content;
        for (const auto &[name, bytes] : files) {
            const auto path = content.filePath(name);
            QDir().mkpath(QFileInfo(path).path());
            QFile file(path);
            EXPECT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(reinterpret_cast<const char *>(bytes.data()), static_cast<qint64>(bytes.size()));
        }
        // By another name first: "zip" gives some characters in an archive's name a meaning, too.
        QProcess zip;
        zip.setWorkingDirectory(content.path());
        const auto plain = home.filePath(QStringLiteral("plain-%1.zip").arg(++count));
        zip.start(QStringLiteral("zip"), {QStringLiteral("-q"), QStringLiteral("-r"), plain, QStringLiteral(".")});
        EXPECT_TRUE(zip.waitForFinished() && zip.exitCode() == 0) << zip.readAll().toStdString();
        const auto path = home.filePath(relative);
        QDir().mkpath(QFileInfo(path).path());
        EXPECT_TRUE(QFile::rename(plain, path));
        return path.toStdString();
    }

    std::string archive(const QString &relative, const Blob &manifest)
    {
        return archive(relative, {{QStringLiteral("AndroidManifest.xml"), manifest}});
    }

    Blob read(const std::string &path, const std::string &entry)
    {
        return APKIconExtractor::read(archives, path, entry).value_or(Blob());
    }

    QTemporaryDir home;
    ZipArchives archives;
    int count = 0;
};

Blob manifestOf(const std::string &package)
{
    return xmlFile({pool({"manifest", "package", package}), startElement(0, {{1, 2}})});
}
} // namespace

TEST_F(PackageFiles, aPackageNameIsReadOutOfARealArchive)
{
    const auto path = archive(QStringLiteral("app.apk"), manifestOf("org.example.app"));
    EXPECT_EQ(APKManifestReader::packageName(archives, path), "org.example.app");
}

TEST_F(PackageFiles, missingFilesOtherFilesAndMissingManifestsAreAbsent)
{
    EXPECT_EQ(
        APKManifestReader::packageName(archives, home.filePath(QStringLiteral("none.apk")).toStdString()),
        std::nullopt);
    QFile text(home.filePath(QStringLiteral("text.apk")));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("no archive at all");
    text.close();
    EXPECT_EQ(APKManifestReader::packageName(archives, text.fileName().toStdString()), std::nullopt);
    EXPECT_EQ(APKIconExtractor::read(archives, text.fileName().toStdString(), "AndroidManifest.xml"), std::nullopt);
    const auto other = archive(QStringLiteral("other.apk"), {{QStringLiteral("classes.dex"), blob("dex")}});
    EXPECT_EQ(APKManifestReader::packageName(archives, other), std::nullopt);
    EXPECT_EQ(APKIconExtractor::read(archives, other, "AndroidManifest.xml"), std::nullopt);
    EXPECT_EQ(APKIconExtractor::read(archives, other, "classes.dex"), blob("dex"));
}

TEST_F(PackageFiles, entriesLargerThanAPipeComeWhole)
{
    Blob large(3 * 1024 * 1024);
    for (std::size_t i = 0; i < large.size(); ++i)
        large[i] = static_cast<std::uint8_t>(i * i / 7);
    EXPECT_EQ(
        read(archive(QStringLiteral("large.apk"), {{QStringLiteral("resources.arsc"), large}}), "resources.arsc"),
        large);
}

TEST_F(PackageFiles, archivesWithPatternCharactersInTheirNamesAreTheOnesRead)
{
    archive(QStringLiteral("game1.apk"), manifestOf("org.decoy.one"));
    archive(QStringLiteral("game.apk"), manifestOf("org.decoy.two"));
    for (const auto *name :
         {"game[1].apk", "game*.apk", "game?.apk", "game\\.apk", "ga\\me[1].apk", "[game.apk", "game].apk",
          "[]game!.apk", "my game (mod) [v1.2].apk", "*", "[*]?"}) {
        const auto path = archive(QString::fromLatin1(name), manifestOf("org.example.real"));
        EXPECT_EQ(APKManifestReader::packageName(archives, path), "org.example.real") << name;
    }
}

TEST_F(PackageFiles, foldersWithPatternCharactersAreTakenAsTheyStand)
{
    archive(QStringLiteral("d1/app.apk"), manifestOf("org.decoy"));
    for (const auto *name : {"d[1]/app.apk", "d*/app.apk", "d\\[1]/a[pp].apk", "d?/a\\pp.apk"}) {
        const auto path = archive(QString::fromLatin1(name), manifestOf("org.example.real"));
        EXPECT_EQ(APKManifestReader::packageName(archives, path), "org.example.real") << name;
    }
}

TEST_F(PackageFiles, aPathThatLooksLikeAnOptionIsAPath)
{
    archive(QStringLiteral("-l.apk"), manifestOf("org.example.dash"));
    const auto previous = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(home.path()));
    EXPECT_EQ(APKManifestReader::packageName(archives, "-l.apk"), "org.example.dash");
    QDir::setCurrent(previous);
}

TEST_F(PackageFiles, entryNamesAreTakenLiterally)
{
    const auto path = archive(
        QStringLiteral("names.apk"),
        {{QStringLiteral("res/a1.png"), blob("decoy")},
         {QStringLiteral("res/a[1].png"), blob("bracket")},
         {QStringLiteral("res/a*.png"), blob("star")},
         {QStringLiteral("res/a?.png"), blob("question")},
         {QStringLiteral("res/a\\b.png"), blob("backslash")},
         {QStringLiteral("-x"), blob("exclude")},
         {QStringLiteral("-d"), blob("directory")}});
    EXPECT_EQ(read(path, "res/a[1].png"), blob("bracket"));
    EXPECT_EQ(read(path, "res/a*.png"), blob("star"));
    EXPECT_EQ(read(path, "res/a?.png"), blob("question"));
    EXPECT_EQ(read(path, "res/a\\b.png"), blob("backslash"));
    EXPECT_EQ(read(path, "-x"), blob("exclude"));
    EXPECT_EQ(read(path, "-d"), blob("directory"));
    EXPECT_EQ(read(path, "*"), Blob());
    EXPECT_EQ(read(path, ""), Blob());
    EXPECT_EQ(read(path, std::string("res/a1.png\0x", 12)), Blob());
}

TEST_F(PackageFiles, anEntryThatUnpacksToMoreThanAnyRealOneIsAbsent)
{
    const auto path = archive(
        QStringLiteral("bomb.apk"), {{QStringLiteral("resources.arsc"), Blob(PackageLimits::largestEntry + 1)}});
    EXPECT_LT(QFileInfo(QString::fromStdString(path)).size(), 1024 * 1024);
    EXPECT_TRUE(read(path, "resources.arsc").empty());
}

TEST_F(PackageFiles, aLiteralLabelIsReturnedWithoutTheTable)
{
    const auto manifest = xmlFile(
        {pool({"manifest", "application", "label", "Plain"}), startElement(0), startElement(1, {{2, 3, 3, 3}})});
    EXPECT_EQ(APKIconExtractor::label(archives, archive(QStringLiteral("literal.apk"), manifest)), "Plain");
}

TEST_F(PackageFiles, aReferredLabelIsTheFirstInTheTable)
{
    const auto manifest = xmlFile(
        {pool({"manifest", "application", "label"}), startElement(0), startElement(1, {{2, none, 1, 0x7F010000}})});
    const auto resources = table(
        {pool({"Erste", "First"}),
         package(0x7F, {typeChunk(1, 0, {fullEntry(3, 0)}), typeChunk(1, 0, {fullEntry(3, 1)})})});
    const auto path = archive(
        QStringLiteral("referred.apk"),
        {{QStringLiteral("AndroidManifest.xml"), manifest}, {QStringLiteral("resources.arsc"), resources}});
    EXPECT_EQ(APKIconExtractor::label(archives, path), "Erste");
}

TEST_F(PackageFiles, anEmptyFirstTextMeansNoLabel)
{
    const auto manifest = xmlFile(
        {pool({"manifest", "application", "label"}), startElement(0), startElement(1, {{2, none, 1, 0x7F010000}})});
    const auto resources = table(
        {pool({"", "Second"}),
         package(
             0x7F,
             {typeChunk(1, 0, {fullEntry(16, 5)}), typeChunk(1, 0, {fullEntry(3, 0)}),
              typeChunk(1, 0, {fullEntry(3, 1)})})});
    const auto path = archive(
        QStringLiteral("empty.apk"),
        {{QStringLiteral("AndroidManifest.xml"), manifest}, {QStringLiteral("resources.arsc"), resources}});
    EXPECT_EQ(APKIconExtractor::label(archives, path), std::nullopt);
}

TEST_F(PackageFiles, aLabelThatIsNeitherTextNorReferenceIsAbsent)
{
    const auto manifest
        = xmlFile({pool({"manifest", "application", "label"}), startElement(0), startElement(1, {{2, none, 16, 7}})});
    EXPECT_EQ(APKIconExtractor::label(archives, archive(QStringLiteral("number.apk"), manifest)), std::nullopt);
    const auto unlabelled = xmlFile({pool({"manifest", "application"}), startElement(0), startElement(1)});
    EXPECT_EQ(APKIconExtractor::label(archives, archive(QStringLiteral("none.apk"), unlabelled)), std::nullopt);
    const auto empty = xmlFile({pool({"manifest"}), startElement(0)});
    EXPECT_EQ(APKIconExtractor::label(archives, archive(QStringLiteral("empty.apk"), empty)), std::nullopt);
}

TEST(PackageReads, aLiteralLabelOpensOneEntryOnly)
{
    FakeArchives memory;
    const auto manifest = xmlFile(
        {pool({"manifest", "application", "label", "Plain"}), startElement(0), startElement(1, {{2, 3, 3, 3}})});
    memory.packages["/a.apk"] = {{"resources.arsc", blob("table")}, {"AndroidManifest.xml", manifest}};
    EXPECT_EQ(APKIconExtractor::label(memory, "/a.apk"), "Plain");
    EXPECT_EQ(memory.reads, std::vector<std::string>{"AndroidManifest.xml"});
}

TEST(PackageReads, aLabelByReferenceOpensThePackageOnce)
{
    FakeArchives memory;
    const auto manifest = xmlFile(
        {pool({"manifest", "application", "label"}), startElement(0), startElement(1, {{2, none, 1, 0x7F010000}})});
    const auto resources = table({pool({"Erste"}), package(0x7F, {typeChunk(1, 0, {fullEntry(3, 0)})})});
    memory.packages["/a.apk"] = {{"resources.arsc", resources}, {"AndroidManifest.xml", manifest}};
    EXPECT_EQ(APKIconExtractor::label(memory, "/a.apk"), "Erste");
    EXPECT_EQ(memory.opened.size(), 1U);
}

TEST(PackageReads, aPackageThatCannotBeOpenedIsAbsent)
{
    FakeArchives memory;
    EXPECT_EQ(APKIconExtractor::read(memory, "/a.apk", "x"), std::nullopt);
    EXPECT_EQ(APKManifestReader::packageName(memory, "/a.apk"), std::nullopt);
    EXPECT_EQ(APKIconExtractor::label(memory, "/a.apk"), std::nullopt);
}

TEST(PackageReads, aManifestLargerThanAnyRealOneIsAbsent)
{
    FakeArchives memory;
    auto manifest = manifestOf("org.example.app");
    manifest.resize(PackageLimits::largestManifest);
    memory.packages["/a.apk"] = {{"AndroidManifest.xml", manifest}};
    EXPECT_EQ(APKManifestReader::packageName(memory, "/a.apk"), "org.example.app");
    manifest.resize(PackageLimits::largestManifest + 1);
    memory.packages["/a.apk"] = {{"AndroidManifest.xml", manifest}};
    EXPECT_EQ(APKManifestReader::packageName(memory, "/a.apk"), std::nullopt);
    EXPECT_EQ(APKIconExtractor::label(memory, "/a.apk"), std::nullopt);
}
