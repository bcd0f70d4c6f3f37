#include "package/AppIconStore.h"

#include "base/QuillnestFolders.h"
#include "fakes/FakePlatform.h"
#include "fakes/IconOfFile.h"
#include "platform/posix/ZipArchives.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
using Bytes = AppIconStore::Bytes;

QByteArray encoded(const QColor &color, const char *format, int side = 48)
{
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format, 100));
    return bytes;
}

Bytes blob(const QByteArray &bytes)
{
    return {bytes.begin(), bytes.end()};
}

class AppIconStoreTest : public ::testing::Test
{
protected:
    AppIconStoreTest()
    {
        putPackages();
        newRun();
    }

    /// The store of a new process.
    void newRun()
    {
        store = std::make_unique<AppIconStore>(
            fakes.platform, log, [this](const APKIconExtractor::IconTools &, const std::string &path) {
                ++extractions;
                lastPath = path;
                auto icon = extracted ? iconOfFile(*fakes.platform.drawing, *extracted) : std::nullopt;
                if (icon && isDrawn)
                    icon->png.clear();
                return icon;
            });
        QObject::connect(store.get(), &AppIconStore::imageChanged, store.get(), [this](QUuid changed) {
            announced.push_back(changed);
        });
    }

    MobileApp app(MobilePlatform platform = MobilePlatform::android) const
    {
        MobileApp result;
        result.id = id;
        result.platform = platform;
        result.sourcePath
            = platform == MobilePlatform::android ? QStringLiteral("/apps/moon.apk") : QStringLiteral("/apps/moon.ipa");
        return result;
    }

    /// Packages with the entries that are listed, which hold what is known of them.
    void putPackages()
    {
        FakeArchives::Entries content;
        for (const auto &name : listing.split('\n')) {
            if (!name.isEmpty())
                content.emplace_back(name.toStdString(), blob(entries.value(QString::fromUtf8(name))));
        }
        for (const auto *path : {"/apps/moon.apk", "/apps/moon.ipa"})
            fakes.archives->packages[path] = content;
    }

    std::optional<Bytes> load(MobilePlatform platform = MobilePlatform::android)
    {
        putPackages();
        return store->loadIconData(id, app(platform).sourcePath, platform);
    }

    std::optional<QString> best(const QByteArray &names, MobilePlatform platform = MobilePlatform::android)
    {
        listing = names;
        putPackages();
        return store->bestEntry(QStringLiteral("/apps/moon.apk"), platform);
    }

    QString keptFile() const
    {
        return QuillnestFolders::icons(fakes.platform.folders) + QLatin1Char('/') + uuidText(id)
            + QStringLiteral(".png");
    }
    void keep(const QByteArray &content) const
    {
        QDir().mkpath(QuillnestFolders::icons(fakes.platform.folders));
        QFile file(keptFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    bool hasLogged(const char *line) const
    {
        return log->tail(100).split(QLatin1Char('\n')).contains(QString::fromUtf8(line));
    }

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<QuillnestLog> log
        = std::make_shared<QuillnestLog>(fakes.clock, fakes.path(QStringLiteral("Logs")), QStringLiteral("log"), true);
    const QUuid id = QUuid::createUuid();
    std::optional<Bytes> extracted;
    /// The icon stands in no file.
    bool isDrawn = false;
    int extractions = 0;
    std::string lastPath;
    std::vector<QUuid> announced;
    QByteArray listing;
    QMap<QString, QByteArray> entries;
    std::unique_ptr<AppIconStore> store;
};

const auto launcher = QStringLiteral("res/mipmap-hdpi/ic_launcher.png");
} // namespace

TEST_F(AppIconStoreTest, theFirstCallBeginsToLoadAndThePictureIsThereAfterTheSignal)
{
    extracted = blob(encoded(Qt::red, "png"));
    EXPECT_TRUE(store->image(app()).isNull());
    EXPECT_EQ(extractions, 0) << "nothing is read on the main thread";
    EXPECT_EQ(fakes.executor->pendingAsUtility(), 1U);
    EXPECT_EQ(fakes.executor->pendingInBackground(), 0U);
    ASSERT_TRUE(fakes.executor->runOneAsUtility());
    EXPECT_TRUE(store->image(app()).isNull()) << "only the main thread changes what is there";
    fakes.settle();
    EXPECT_EQ(announced, std::vector{id});
    const auto picture = store->image(app());
    EXPECT_EQ(picture.size(), QSize(48, 48));
    EXPECT_EQ(picture.pixelColor(20, 20), QColor(Qt::red));
    EXPECT_EQ(store->images().size(), 1U);
    EXPECT_EQ(extractions, 1);
}

TEST_F(AppIconStoreTest, aPictureIsShownBeforeItsFileIsWritten)
{
    extracted = blob(encoded(Qt::red, "png"));
    store->image(app());
    fakes.executor->runOneAsUtility();
    fakes.executor->drainMain();
    EXPECT_EQ(announced, std::vector{id});
    EXPECT_FALSE(QFile::exists(keptFile()));
    ASSERT_TRUE(fakes.executor->runOneAsUtility());
    EXPECT_EQ(fakes.readFile(keptFile()), encoded(Qt::red, "png"));
    EXPECT_EQ(fakes.executor->pendingAsUtility(), 0U);
    EXPECT_EQ(store->image(app()).pixelColor(20, 20), QColor(Qt::red)) << "its memory is its own";
}

TEST_F(AppIconStoreTest, picturesWaitForNoFileOfAnother)
{
    extracted = blob(encoded(Qt::red, "png"));
    std::vector<MobileApp> apps(4, app());
    for (auto &one : apps)
        one.id = QUuid::createUuid();
    for (int i = 0; i < 3; ++i)
        store->image(apps.at(i));
    for (int i = 0; i < 3; ++i)
        fakes.executor->runOneAsUtility();
    EXPECT_EQ(fakes.executor->pendingAsUtility(), 1U) << "files are written one after the other";
    store->image(apps.at(3));
    fakes.executor->runOneAsUtility();
    fakes.executor->runOneAsUtility();
    fakes.executor->drainMain();
    EXPECT_EQ(announced.size(), 4U) << "a picture that is asked for late comes after one file, not after all";
    const QDir folder(QuillnestFolders::icons(fakes.platform.folders));
    EXPECT_EQ(folder.entryList(QDir::Files).size(), 1);
    fakes.settle();
    EXPECT_EQ(folder.entryList(QDir::Files).size(), 4);
    // And the next one begins anew.
    apps.front().id = QUuid::createUuid();
    store->image(apps.front());
    fakes.settle();
    EXPECT_EQ(folder.entryList(QDir::Files).size(), 5);
}

TEST_F(AppIconStoreTest, aLargePictureIsKeptAtOnceForItsMemory)
{
    extracted = blob(encoded(Qt::red, "png", AppIconStore::largestSide + 1));
    store->image(app());
    fakes.executor->runOneAsUtility();
    EXPECT_TRUE(QFile::exists(keptFile()));
    EXPECT_EQ(fakes.executor->pendingAsUtility(), 0U);
}

TEST_F(AppIconStoreTest, aPictureThatWasDrawnIsKeptAsItIsShown)
{
    isDrawn = true;
    extracted = blob(encoded(QColor(200, 100, 50, 120), "png"));
    store->image(app());
    fakes.settle();
    const auto first = store->image(app());
    ASSERT_FALSE(first.isNull());
    extracted.reset();
    newRun();
    store->image(app());
    fakes.settle();
    EXPECT_EQ(store->image(app()), first);
}

TEST_F(AppIconStoreTest, aSecondCallWhileItLoadsBeginsNoSecondLoad)
{
    extracted = blob(encoded(Qt::red, "png"));
    store->image(app());
    EXPECT_TRUE(store->image(app()).isNull());
    EXPECT_EQ(fakes.executor->pendingAsUtility(), 1U);
    fakes.executor->runOneAsUtility();
    EXPECT_TRUE(store->image(app()).isNull());
    fakes.settle();
    EXPECT_EQ(extractions, 1);
}

TEST_F(AppIconStoreTest, aLoadThatFailedIsTriedAgainOnlyInTheNextRun)
{
    store->image(app());
    fakes.settle();
    EXPECT_EQ(extractions, 1);
    extracted = blob(encoded(Qt::red, "png"));
    EXPECT_TRUE(store->image(app()).isNull());
    fakes.settle();
    EXPECT_TRUE(store->image(app()).isNull());
    EXPECT_EQ(extractions, 1);
    EXPECT_TRUE(announced.empty());
    newRun();
    store->image(app());
    fakes.settle();
    EXPECT_FALSE(store->image(app()).isNull());
}

TEST_F(AppIconStoreTest, aStoreMayGoWhileItsLoadsRun)
{
    extracted = blob(encoded(Qt::red, "png"));
    store->image(app());
    store.reset();
    fakes.settle();
    EXPECT_EQ(extractions, 1);
}

TEST_F(AppIconStoreTest, aLargePictureIsMadeSmaller)
{
    extracted = blob(encoded(Qt::red, "png", 1024));
    store->image(app());
    fakes.settle();
    EXPECT_EQ(store->image(app()).size(), QSize(AppIconStore::largestSide, AppIconStore::largestSide));
    EXPECT_EQ(store->image(app()).pixelColor(100, 100), QColor(Qt::red));
}

TEST_F(AppIconStoreTest, aKeptIconWinsWithoutALookAtThePackage)
{
    const auto kept = encoded(Qt::green, "png");
    keep(kept);
    extracted = blob(encoded(Qt::red, "png"));
    EXPECT_EQ(load(), blob(kept));
    EXPECT_EQ(load(MobilePlatform::ios), blob(kept));
    EXPECT_EQ(extractions, 0);
    EXPECT_TRUE(fakes.archives->opened.empty());
}

TEST_F(AppIconStoreTest, aKeptFileThatIsNoPictureLeavesTheAppWithoutOne)
{
    keep("not a picture");
    extracted = blob(encoded(Qt::red, "png"));
    store->image(app());
    fakes.settle();
    EXPECT_TRUE(store->image(app()).isNull());
    EXPECT_EQ(extractions, 0);
    EXPECT_EQ(fakes.readFile(keptFile()), QByteArray("not a picture"));
}

TEST_F(AppIconStoreTest, anIconThatTheManifestNamesIsKept)
{
    const auto png = encoded(Qt::red, "png");
    extracted = blob(png);
    EXPECT_EQ(load(), extracted);
    EXPECT_EQ(lastPath, "/apps/moon.apk");
    EXPECT_EQ(fakes.readFile(keptFile()), png);
    EXPECT_TRUE(hasLogged("icon: resolved via resources.arsc for moon.apk"));
    EXPECT_TRUE(fakes.archives->opened.empty());
    extracted.reset();
    newRun();
    EXPECT_EQ(load(), blob(png)) << "the next run has it";
}

TEST_F(AppIconStoreTest, withoutOneTheBestEntryIsTaken)
{
    listing = "res/drawable-mdpi/icon.png\nres/mipmap-hdpi/ic_launcher.png\n";
    entries[launcher] = encoded(Qt::blue, "png");
    const auto png = load();
    ASSERT_TRUE(png);
    EXPECT_EQ(
        fakes.readFile(keptFile()), QByteArray(reinterpret_cast<const char *>(png->data()), qsizetype(png->size())));
    EXPECT_TRUE(hasLogged("icon: res/mipmap-hdpi/ic_launcher.png from moon.apk"));
    EXPECT_EQ(fakes.archives->opened, std::vector<std::string>{"/apps/moon.apk"});
    EXPECT_EQ(fakes.archives->reads, std::vector<std::string>{"res/mipmap-hdpi/ic_launcher.png"});
    EXPECT_EQ(fakes.platform.drawing->decode(*png)->pixels.at(0), 0xFF0000FFU);
}

TEST_F(AppIconStoreTest, aWebPEntryIsKeptAsPng)
{
    listing = "res/mipmap-hdpi/ic_launcher.webp\n";
    entries[QStringLiteral("res/mipmap-hdpi/ic_launcher.webp")] = encoded(Qt::blue, "webp");
    const auto png = load();
    ASSERT_TRUE(png);
    EXPECT_EQ(std::string(png->begin(), png->begin() + 4), "\x89PNG");
    EXPECT_TRUE(fakes.readFile(keptFile())->startsWith("\x89PNG"));
}

TEST_F(AppIconStoreTest, anIpaHasNoManifestToAsk)
{
    extracted = blob(encoded(Qt::red, "png"));
    listing = "Payload/Moon.app/AppIcon60x60@2x.png\n";
    entries[QStringLiteral("Payload/Moon.app/AppIcon60x60@2x.png")] = encoded(Qt::blue, "png");
    ASSERT_TRUE(load(MobilePlatform::ios));
    EXPECT_EQ(extractions, 0);
    EXPECT_TRUE(hasLogged("icon: Payload/Moon.app/AppIcon60x60@2x.png from moon.ipa"));
}

TEST_F(AppIconStoreTest, whatCannotBeReadOrDecodedIsNone)
{
    const auto isNone = [this](const char *what) {
        const auto logged = log->tail(100).count(QStringLiteral("icon: none found in moon.apk"));
        EXPECT_FALSE(load()) << what;
        EXPECT_EQ(log->tail(100).count(QStringLiteral("icon: none found in moon.apk")), logged + 1) << what;
        EXPECT_FALSE(QFile::exists(keptFile())) << what;
    };
    isNone("no entries");
    listing = "res/mipmap-hdpi/ic_launcher.png\n";
    isNone("no bytes");
    entries[launcher] = "not a picture";
    isNone("no picture");
    entries[launcher] = encoded(Qt::red, "png").left(80);
    isNone("half a picture");
    entries[launcher] = encoded(Qt::red, "bmp");
    isNone("another format");
    entries[launcher] = encoded(Qt::red, "png");
}

TEST_F(AppIconStoreTest, anIconThatCannotBeKeptIsStillShown)
{
    // A file where the folder should be.
    fakes.writeFile(QStringLiteral("Application Support/Quillnest/Icons"), "in the way");
    extracted = blob(encoded(Qt::red, "png"));
    store->image(app());
    fakes.settle();
    EXPECT_FALSE(store->image(app()).isNull());
    extracted.reset();
    listing = "res/mipmap-hdpi/ic_launcher.png\n";
    entries[launcher] = encoded(Qt::blue, "png");
    EXPECT_TRUE(load());
}

TEST_F(AppIconStoreTest, anEntrysWorthGoesByItsName)
{
    const auto score = [](const char *entry) { return AppIconStore::score(QString::fromLatin1(entry)); };
    EXPECT_EQ(score("res/mipmap-xxxhdpi-v4/ic_launcher.png"), 60);
    EXPECT_EQ(score("res/mipmap-xxxhdpi-v4/ic_launcher_round.png"), 55);
    EXPECT_EQ(score("res/drawable-hdpi/icon.png"), 23);
    EXPECT_EQ(score("res/mipmap-mdpi/ic_launcher.png"), 20);
    EXPECT_EQ(score("res/drawable-xxhdpi/app_icon.png"), 43);
    EXPECT_EQ(score("res/drawable-xhdpi/app_icon.png"), 33);
    EXPECT_EQ(score("res/drawable/icon.png"), 3);
    EXPECT_EQ(score("res/drawable-ldpi/ic_launcher.webp"), 5);
    EXPECT_EQ(score("RES/MIPMAP-HDPI/ICON.PNG"), 3);
}

TEST_F(AppIconStoreTest, theGreatestDensityOfTheLauncherWins)
{
    EXPECT_EQ(
        best("res/mipmap-xxxhdpi-v4/ic_launcher_round.png\nres/mipmap-xxxhdpi-v4/ic_launcher.png\n"),
        QStringLiteral("res/mipmap-xxxhdpi-v4/ic_launcher.png"));
    EXPECT_EQ(
        best("res/mipmap-mdpi/ic_launcher.png\nres/drawable-hdpi/icon.png\n"),
        QStringLiteral("res/drawable-hdpi/icon.png"));
}

TEST_F(AppIconStoreTest, ofEqualsTheFirstWins)
{
    EXPECT_EQ(
        best("res/drawable-hdpi/icon_b.png\nres/drawable-hdpi/icon_a.png\n"),
        QStringLiteral("res/drawable-hdpi/icon_b.png"));
}

TEST_F(AppIconStoreTest, layersAndOtherPicturesAreNeverChosen)
{
    for (const auto *name :
         {"res/mipmap-xxxhdpi/ic_launcher_foreground.png", "res/mipmap-xxxhdpi/ic_launcher_background.png",
          "res/mipmap-xxxhdpi/ic_launcher_monochrome.webp", "res/mipmap-xxxhdpi/IC_LAUNCHER_FOREGROUND.PNG",
          "res/mipmap-xxxhdpi/my_icon.png", "assets/icon.png", "res/mipmap/ic_launcher.xml", "icon.png",
          "res/mipmap/ic_launcher.jpg", "res/icons/photo.png", "res/mipmap/ic_launcher.png/"})
        EXPECT_EQ(best(name), std::nullopt) << name;
    // A folder's name says nothing.
    EXPECT_EQ(best("res/background/icon.png"), QStringLiteral("res/background/icon.png"));
}

TEST_F(AppIconStoreTest, theFilterTakesNoNoticeOfCaseWhileTheWorthDoes)
{
    EXPECT_EQ(best("RES/MIPMAP-HDPI/ICON.PNG\n"), QStringLiteral("RES/MIPMAP-HDPI/ICON.PNG"));
    EXPECT_EQ(
        best("RES/MIPMAP-HDPI/ICON.PNG\nres/drawable-mdpi/icon.png\n"), QStringLiteral("res/drawable-mdpi/icon.png"));
}

TEST_F(AppIconStoreTest, aListThatIsNoTextHasNoEntry)
{
    EXPECT_EQ(best("res/mipmap-hdpi/ic_launcher.png\nassets/\xFF\xFE.bin\n"), std::nullopt);
    EXPECT_EQ(best("res/mipmap-hdpi/ic_launcher.png\nassets/\xC3\xA9.bin\n"), launcher);
    EXPECT_EQ(best(""), std::nullopt);
    EXPECT_EQ(best("\n\n"), std::nullopt);
}

TEST_F(AppIconStoreTest, theWorthOfAnEntryOfAnIpaIsItsFirstNumber)
{
    const auto score = [](const char *entry) { return AppIconStore::iosScore(QString::fromUtf8(entry)); };
    EXPECT_EQ(score("Payload/App.app/AppIcon60x60@2x.png"), 120);
    EXPECT_EQ(score("Payload/App.app/AppIcon60x60@3x.png"), 180);
    EXPECT_EQ(score("Payload/App.app/AppIcon76x76.png"), 76);
    EXPECT_EQ(score("Payload/App2.app/AppIcon60x60@2x.png"), 4) << "also one in the folder's name";
    EXPECT_EQ(score("Payload/App.app/AppIcon.png"), 0);
    EXPECT_EQ(score("Payload/App.app/AppIcon@2x.png"), 4) << "the factor is a number, too";
    EXPECT_EQ(score("Payload/App.app/Icon-99999999999999999999-7.png"), 7) << "a number that is none of ours";
    EXPECT_EQ(score("Payload/9223372036854775807.app/AppIcon@3x.png"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(score("Payload/\xD9\xA3.app/AppIcon.png"), 0);
}

TEST_F(AppIconStoreTest, anIpasIconIsFoundByTheNamesOfItsTime)
{
    const auto ios = MobilePlatform::ios;
    EXPECT_EQ(best("Payload/App.app/AppIcon.png\n", ios), QStringLiteral("Payload/App.app/AppIcon.png"));
    EXPECT_EQ(
        best(
            "Payload/App.app/AppIcon20x20@3x.png\nPayload/App.app/Icon-120.PNG\nPayload/App.app/AppIcon40x40.png", ios),
        QStringLiteral("Payload/App.app/Icon-120.PNG"));
    for (const auto *name :
         {"payload/App.app/AppIcon.png", "Payload/App/AppIcon.png", "Payload/App.app/appicon.png",
          "Payload/App.app/icon-60.png", "Payload/App.app/AppIcon.jpg", "res/mipmap-hdpi/ic_launcher.png"})
        EXPECT_EQ(best(name, ios), std::nullopt) << name;
}

namespace
{
/// Real archives, made by "zip".
class AppIconStoreFiles : public AppIconStoreTest
{
protected:
    AppIconStoreFiles()
    {
        fakes.platform.archives = std::make_shared<ZipArchives>();
        newRun();
    }

    QString archive(const QString &name, const QMap<QString, QByteArray> &files)
    {
        const auto folder = QStringLiteral("content-%1/").arg(++m_archives);
        for (auto file = files.cbegin(); file != files.cend(); ++file)
            fakes.writeFile(folder + file.key(), file.value());
        QProcess zip;
        zip.setWorkingDirectory(fakes.path(folder));
        const auto plain = fakes.path(QStringLiteral("plain.zip"));
        zip.start(QStringLiteral("zip"), {QStringLiteral("-q"), QStringLiteral("-r"), plain, QStringLiteral(".")});
        EXPECT_TRUE(zip.waitForFinished() && zip.exitCode() == 0) << zip.readAll().toStdString();
        EXPECT_TRUE(QFile::rename(plain, fakes.path(name)));
        return fakes.path(name);
    }

    std::uint32_t firstPixel(const std::optional<Bytes> &png) const
    {
        const auto image = png ? fakes.platform.drawing->decode(*png) : std::nullopt;
        return image ? image->pixels.at(0) : 0;
    }

private:
    int m_archives = 0;
};
} // namespace

TEST_F(AppIconStoreFiles, anIconIsFoundInARealPackage)
{
    const auto path = archive(
        QStringLiteral("moon.apk"),
        {{QStringLiteral("res/mipmap-mdpi/ic_launcher.png"), encoded(Qt::red, "png")},
         {QStringLiteral("res/mipmap-xxhdpi/ic_launcher.webp"), encoded(Qt::blue, "webp")},
         {QStringLiteral("res/mipmap-xxxhdpi/ic_launcher_foreground.png"), encoded(Qt::green, "png")},
         {QStringLiteral("classes.dex"), "dex"}});
    const auto png = store->loadIconData(id, path, MobilePlatform::android);
    EXPECT_EQ(firstPixel(png), 0xFF0000FFU);
    EXPECT_TRUE(fakes.readFile(keptFile())->startsWith("\x89PNG"));
}

TEST_F(AppIconStoreFiles, namesThatAreMadeToMisleadAreTakenLiterally)
{
    const auto path = archive(
        QStringLiteral("[m]*on?.apk"),
        {{QStringLiteral("res/mipmap-mdpi/icon1.png"), encoded(Qt::red, "png")},
         {QStringLiteral("res/mipmap-xxhdpi/icon[1]*?.png"), encoded(Qt::blue, "png")},
         {QStringLiteral("-x"), "an option"},
         {QStringLiteral("res/mipmap-xxhdpi/icon1ab.png"), encoded(Qt::green, "png").left(60)}});
    EXPECT_EQ(store->bestEntry(path, MobilePlatform::android), QStringLiteral("res/mipmap-xxhdpi/icon[1]*?.png"));
    EXPECT_EQ(firstPixel(store->loadIconData(id, path, MobilePlatform::android)), 0xFF0000FFU);
}

TEST_F(AppIconStoreFiles, aPackageThatIsGoneOrNoArchiveHasNone)
{
    EXPECT_FALSE(store->loadIconData(id, fakes.path(QStringLiteral("gone.apk")), MobilePlatform::android));
    EXPECT_TRUE(hasLogged("icon: none found in gone.apk"));
    const auto text = fakes.writeFile(QStringLiteral("text.apk"), "res/mipmap-hdpi/ic_launcher.png");
    EXPECT_FALSE(store->loadIconData(id, text, MobilePlatform::android));
    EXPECT_TRUE(hasLogged("icon: none found in text.apk"));
}
