#include "runtime/AndroidRuntimeProvisioner.h"

#include "fakes/FakeNetwork.h"
#include "runtime/RuntimeFixture.h"
#include "runtime/RuntimeProvisionError.h"
#include "runtime/Sha1.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace quillnest;

namespace
{

using Provisioner = AndroidRuntimeProvisioner;

const QUrl tools(QStringLiteral("https://dl.google.com/android/repository/repository2-3.xml"));
const QUrl images(QStringLiteral("https://dl.google.com/android/repository/sys-img/android/sys-img2-3.xml"));

QByteArray sum(const QByteArray &content)
{
    return QCryptographicHash::hash(content, QCryptographicHash::Sha1).toHex();
}

QByteArray package(const QByteArray &path, const QByteArray &name, const QByteArray &content, const QByteArray &license)
{
    return "<remotePackage path='" + path + "'><revision><major>3</major></revision><display-name>" + name
        + "</display-name><uses-license ref='" + license + "'/><archives><archive><complete><size>"
        + QByteArray::number(content.size()) + "</size><checksum>" + sum(content).toUpper() + "</checksum><url>"
        + content + ".zip</url></complete></archive></archives></remotePackage>";
}

class ProvisionerTest : public ::testing::Test
{
protected:
    ProvisionerTest()
    {
        fakes.platform.network = network;
        serve();
        archives->onUnpack = [this](const QString &archive) {
            const auto paths = AndroidRuntimePaths::managed(fakes.platform, 35);
            const auto place = [this](const QString &path, bool executable) {
                fakes.writeFile(path.mid(fakes.home->path().size() + 1), "x", executable);
            };
            if (archive.endsWith(QLatin1String("tools.zip")))
                place(paths.adb(), true);
            else if (archive.endsWith(QLatin1String("emulator.zip")))
                place(paths.emulator(), true);
            else
                place(paths.systemImage(), false);
        };
        provisioner.emplace(fakes.platform);
        QObject::connect(&*provisioner, &Provisioner::changed, [this] { phases.push_back(provisioner->phase()); });
    }

    void serve()
    {
        network->answers[tools]
            = {200,
               "<r><license id='a'>Terms A</license>" + package("platform-tools", "Platform Tools", "tools", "a")
                   + package("emulator", emulatorName, "emulator", "a") + "</r>"};
        network->answers[images]
            = {200,
               "<r><license id='b'>Terms B</license>"
                   + package("system-images;android-35;default;x86_64", "Image", "image", "b") + "</r>"};
    }

    void settle() { fakes.settle(); }

    /// As far as the user's question.
    void offer()
    {
        provisioner->prepare();
        settle();
    }

    /// The download that runs has come to its end with this content.
    void deliver(const QByteArray &content, int status = 200)
    {
        ASSERT_FALSE(network->downloads.empty());
        const auto running = network->downloads.back();
        ASSERT_FALSE(running->dropped);
        const auto file = running->folder + QStringLiteral("/incoming.part");
        QFile part(file);
        ASSERT_TRUE(part.open(QIODevice::WriteOnly));
        part.write(content);
        part.close();
        const auto events = running->events;
        events.onFinished(status, file);
        if (!running->dropped)
            events.onCompleted(std::nullopt);
        QFile::remove(file);
        settle();
    }

    void installAll()
    {
        offer();
        provisioner->acceptAndInstall();
        settle();
        for (const auto *content : {"tools", "emulator", "image"})
            deliver(content);
    }

    QString root() const { return AndroidRuntimePaths::managedRoot(fakes.platform); }
    QString sdk() const { return AndroidRuntimePaths::managed(fakes.platform, 35).sdkRoot; }
    QString log() const
    {
        const auto file = fakes.readFile(fakes.platform.folders.logs + QStringLiteral("/runtime-setup.log"));
        return QString::fromUtf8(file.value_or(QByteArray()));
    }
    template <typename Phase> bool is() const { return std::holds_alternative<Phase>(provisioner->phase()); }
    QString failure() const
    {
        const auto *failed = std::get_if<Provisioner::Failed>(&provisioner->phase());
        return failed ? failed->text : QStringLiteral("no failure");
    }

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<FakeNetwork> network = std::make_shared<FakeNetwork>();
    std::shared_ptr<FakeArchives> archives = fakes.archives;
    QByteArray emulatorName = "Emulator";
    std::optional<Provisioner> provisioner;
    std::vector<Provisioner::Phase> phases;
};

} // namespace

TEST_F(ProvisionerTest, theWholeWayFromNothingToReady)
{
    installAll();
    EXPECT_TRUE(is<Provisioner::Ready>());
    EXPECT_EQ(
        phases,
        (std::vector<Provisioner::Phase>{
            Provisioner::Checking{}, Provisioner::NeedsAcceptance{},
            Provisioner::Downloading{QStringLiteral("Platform Tools"), 0},
            Provisioner::Installing{QStringLiteral("Verifying Platform Tools…")},
            Provisioner::Installing{QStringLiteral("Unpacking Platform Tools…")},
            Provisioner::Downloading{QStringLiteral("Emulator"), 0},
            Provisioner::Installing{QStringLiteral("Verifying Emulator…")},
            Provisioner::Installing{QStringLiteral("Unpacking Emulator…")},
            Provisioner::Downloading{QStringLiteral("Image"), 0},
            Provisioner::Installing{QStringLiteral("Verifying Image…")},
            Provisioner::Installing{QStringLiteral("Unpacking Image…")},
            Provisioner::Installing{QStringLiteral("Creating Quillnest Android device…")}, Provisioner::Ready{}}));
    EXPECT_EQ(
        archives->unpacked,
        (QStringList{
            QStringLiteral("tools.zip > ") + sdk(), QStringLiteral("emulator.zip > ") + sdk(),
            QStringLiteral("image.zip > ") + sdk() + QStringLiteral("/system-images/android-35/default")}));
    EXPECT_TRUE(AndroidRuntimePaths::managed(fakes.platform, 35).isComplete());
    EXPECT_FALSE(QFile::exists(root() + QStringLiteral("/downloads")));
}

TEST_F(ProvisionerTest, theLogTellsThePlanTheConsentAndEachStep)
{
    installAll();
    const auto text = log();
    for (const auto &line :
         {QStringLiteral("plan emulator 3.0.0 8 bytes sha1=%1 https://dl.google.com/android/repository/emulator.zip "
                         "license=a")
              .arg(QString::fromLatin1(sum("emulator"))),
          QStringLiteral("user accepted licences a,b"), QStringLiteral("downloaded tools.zip in 0.0s"),
          QStringLiteral("installed platform-tools 3.0.0 into ") + sdk(), QStringLiteral("runtime ready at ") + root()})
        EXPECT_TRUE(text.contains(line)) << line.toStdString() << "\n" << text.toStdString();
}

TEST_F(ProvisionerTest, whatWasInstalledAndAcceptedIsOnRecord)
{
    installAll();
    const auto file = fakes.readFile(root() + QStringLiteral("/runtime-manifest.json"));
    ASSERT_TRUE(file);
    const auto manifest = QJsonDocument::fromJson(*file).object();
    EXPECT_EQ(
        manifest.keys(),
        (QStringList{QStringLiteral("acceptedLicenses"), QStringLiteral("installedAt"), QStringLiteral("packages")}));
    EXPECT_EQ(
        manifest[QStringLiteral("acceptedLicenses")].toArray(), (QJsonArray{QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(
        QDateTime::fromString(manifest[QStringLiteral("installedAt")].toString(), Qt::ISODate),
        QDateTime::fromSecsSinceEpoch(fakes.clock->wallTime().toSecsSinceEpoch()));
    const auto packages = manifest[QStringLiteral("packages")].toArray();
    ASSERT_EQ(packages.size(), 3);
    EXPECT_EQ(
        packages[0].toObject(),
        (QJsonObject{
            {QStringLiteral("path"), QStringLiteral("platform-tools")},
            {QStringLiteral("revision"), QStringLiteral("3.0.0")},
            {QStringLiteral("sha1"), QString::fromLatin1(sum("tools"))},
            {QStringLiteral("url"), QStringLiteral("https://dl.google.com/android/repository/tools.zip")}}));
    EXPECT_TRUE(file->contains("\n"));
}

TEST_F(ProvisionerTest, twoLicencesAreTwoFiles)
{
    installAll();
    EXPECT_EQ(fakes.readFile(sdk() + QStringLiteral("/licenses/a.txt")), QByteArray("Terms A"));
    EXPECT_EQ(fakes.readFile(sdk() + QStringLiteral("/licenses/b.txt")), QByteArray("Terms B"));
}

TEST_F(ProvisionerTest, aCompleteRuntimeIsReadyAtOnce)
{
    installAll();
    Provisioner other(fakes.platform);
    other.prepare();
    EXPECT_TRUE(std::holds_alternative<Provisioner::Ready>(other.phase()));
}

TEST_F(ProvisionerTest, progressIsTheShareOfTheWhole)
{
    offer();
    provisioner->acceptAndInstall();
    settle();
    const auto running = network->downloads.at(0);
    EXPECT_EQ(running->url, QUrl(QStringLiteral("https://dl.google.com/android/repository/tools.zip")));
    running->events.onWrite(1, 4);
    EXPECT_EQ(
        provisioner->phase(), Provisioner::Phase(Provisioner::Downloading{QStringLiteral("Platform Tools"), 0.25}));
    running->events.onWrite(2, -1);
    EXPECT_EQ(provisioner->phase(), Provisioner::Phase(Provisioner::Downloading{QStringLiteral("Platform Tools"), 0}));
    running->events.onWrite(2, 0);
    EXPECT_EQ(provisioner->phase(), Provisioner::Phase(Provisioner::Downloading{QStringLiteral("Platform Tools"), 0}));
}

TEST_F(ProvisionerTest, archivesThatAreThereAreNotFetchedAgainAndVerifiedAllTheSame)
{
    offer();
    for (const auto *content : {"tools", "emulator", "image"})
        fakes.writeFile(
            (root() + QStringLiteral("/downloads/%1.zip").arg(QLatin1String(content)))
                .mid(fakes.home->path().size() + 1),
            content);
    provisioner->acceptAndInstall();
    settle();
    EXPECT_TRUE(is<Provisioner::Ready>());
    EXPECT_TRUE(network->downloads.empty());
    int verified = 0;
    for (const auto &phase : phases) {
        const auto *step = std::get_if<Provisioner::Installing>(&phase);
        verified += step && step->text.startsWith(QLatin1String("Verifying")) ? 1 : 0;
    }
    EXPECT_EQ(verified, 3);
}

TEST_F(ProvisionerTest, anAnswerOtherThanAFileIsSaidWithItsNumber)
{
    offer();
    provisioner->acceptAndInstall();
    settle();
    deliver("not found", 404);
    EXPECT_EQ(failure(), QStringLiteral("Download failed: HTTP 404"));
    EXPECT_TRUE(log().contains(QStringLiteral("install failed: Download failed: HTTP 404")));
    EXPECT_TRUE(network->downloads.at(0)->dropped);
    EXPECT_TRUE(QDir(root() + QStringLiteral("/downloads")).entryList(QDir::Files).isEmpty());
}

TEST_F(ProvisionerTest, aTransferThatBreaksIsSaidInTheHostsWords)
{
    offer();
    provisioner->acceptAndInstall();
    settle();
    const auto events = network->downloads.at(0)->events;
    events.onCompleted(QStringLiteral("Connection closed"));
    settle();
    EXPECT_EQ(
        failure(),
        QStringLiteral("Google's servers can't be reached. Check the connection to the internet, and try again. "
                       "(Download failed: Connection closed)"));
    EXPECT_TRUE(log().contains(QStringLiteral("install failed: Download failed: Connection closed")));
}

TEST_F(ProvisionerTest, listsThatCannotBeFetchedAreSaidInPlainWords)
{
    network->answers.clear();
    network->failure = QStringLiteral("Connection refused");
    offer();
    EXPECT_EQ(
        failure(),
        QStringLiteral("Google's servers can't be reached. Check the connection to the internet, and try again. "
                       "(Connection refused)"));
}

TEST_F(ProvisionerTest, nothingLargerThanAnnouncedIsTaken)
{
    offer();
    provisioner->acceptAndInstall();
    settle();
    const auto running = network->downloads.at(0);
    const auto events = running->events;
    events.onWrite(5, 5);
    EXPECT_TRUE(is<Provisioner::Downloading>());
    events.onWrite(6, -1);
    settle();
    EXPECT_EQ(failure(), QStringLiteral("Download failed: the file is larger than Google's list says"));
    EXPECT_TRUE(running->dropped);
}

TEST_F(ProvisionerTest, aConsentForAnotherImageIsRefusedAndAskedForAnew)
{
    offer();
    fakes.settings->setValue(QStringLiteral("QuillnestAndroidAPI"), 33);
    network->answers[images].body.replace("android-35", "android-33");
    provisioner->acceptAndInstall();
    settle();
    EXPECT_TRUE(network->downloads.empty());
    EXPECT_TRUE(is<Provisioner::NeedsAcceptance>());
    EXPECT_EQ(
        provisioner->plan()->archives.back().packagePath, QStringLiteral("system-images;android-33;default;x86_64"));
}

TEST_F(ProvisionerTest, aWrongSumIsSaidAndTheNextAttemptFetchesAnew)
{
    offer();
    provisioner->acceptAndInstall();
    settle();
    deliver("tampered");
    EXPECT_EQ(failure(), QStringLiteral("Downloaded Platform Tools failed its checksum. Please try again."));
    EXPECT_EQ(fakes.readFile(root() + QStringLiteral("/downloads/tools.zip")), QByteArray("tampered"));
    EXPECT_TRUE(archives->unpacked.isEmpty());

    offer();
    EXPECT_TRUE(is<Provisioner::NeedsAcceptance>());
    provisioner->acceptAndInstall();
    settle();
    deliver("tools");
    EXPECT_EQ(fakes.readFile(root() + QStringLiteral("/downloads/tools.zip")), QByteArray("tools"));
    EXPECT_EQ(archives->unpacked.size(), 1);
}

TEST_F(ProvisionerTest, anArchiveThatCannotBeUnpackedStaysForTheNextAttempt)
{
    archives->refused = QStringLiteral("image.zip");
    installAll();
    EXPECT_EQ(failure(), QStringLiteral("Could not unpack Image"));
    EXPECT_TRUE(QFile::exists(root() + QStringLiteral("/downloads/image.zip")));
    EXPECT_FALSE(QFile::exists(root() + QStringLiteral("/runtime-manifest.json")));

    archives->refused.clear();
    const auto fetchedBefore = network->downloads.size();
    offer();
    EXPECT_EQ(provisioner->plan()->archives.size(), 1U);
    provisioner->acceptAndInstall();
    settle();
    EXPECT_TRUE(is<Provisioner::Ready>());
    EXPECT_EQ(network->downloads.size(), fetchedBefore);
}

TEST_F(ProvisionerTest, withoutAPlanOrAfterAFailureConsentDoesNothing)
{
    provisioner->acceptAndInstall();
    settle();
    EXPECT_TRUE(is<Provisioner::Idle>());
    network->answers.clear();
    offer();
    EXPECT_EQ(failure(), QStringLiteral("no answer"));
    EXPECT_TRUE(log().contains(QStringLiteral("plan failed: no answer")));
    provisioner->acceptAndInstall();
    settle();
    EXPECT_EQ(failure(), QStringLiteral("no answer"));
    EXPECT_TRUE(network->downloads.empty());
}

TEST_F(ProvisionerTest, aSecondConsentWhileTheFirstIsAtWorkDoesNothing)
{
    offer();
    provisioner->acceptAndInstall();
    settle();
    provisioner->acceptAndInstall();
    settle();
    EXPECT_EQ(network->downloads.size(), 1U);
}

TEST_F(ProvisionerTest, aConsentCountsAtOnceForASecondOneAndForAReset)
{
    offer();
    provisioner->acceptAndInstall();
    provisioner->acceptAndInstall();
    provisioner->reset();
    EXPECT_TRUE(is<Provisioner::Downloading>());
    EXPECT_TRUE(provisioner->plan());
    settle();
    EXPECT_EQ(network->downloads.size(), 1U);
    EXPECT_EQ(log().count(QStringLiteral("user accepted")), 1);
}

TEST_F(ProvisionerTest, resetDuringADownloadDoesNothing)
{
    offer();
    provisioner->acceptAndInstall();
    settle();
    provisioner->reset();
    EXPECT_TRUE(is<Provisioner::Downloading>());
    EXPECT_TRUE(provisioner->plan());
}

TEST_F(ProvisionerTest, resetForgetsPlanAndFailure)
{
    offer();
    provisioner->reset();
    EXPECT_TRUE(is<Provisioner::Idle>());
    EXPECT_FALSE(provisioner->plan());
}

TEST_F(ProvisionerTest, aPlanThatWasOvertakenByAResetIsDropped)
{
    provisioner->prepare();
    EXPECT_TRUE(is<Provisioner::Checking>());
    provisioner->reset();
    settle();
    EXPECT_TRUE(is<Provisioner::Idle>());
    EXPECT_FALSE(provisioner->plan());
}

TEST_F(ProvisionerTest, prepareWhileCheckingDoesNothing)
{
    provisioner->prepare();
    provisioner->prepare();
    settle();
    EXPECT_EQ(network->fetched.size(), 2);
    offer();
    EXPECT_EQ(network->fetched.size(), 2);
}

TEST_F(ProvisionerTest, aPackageWithoutANameIsCalledByItsPathInAllTheTexts)
{
    emulatorName.clear();
    serve();
    offer();
    provisioner->acceptAndInstall();
    settle();
    deliver("tools");
    EXPECT_EQ(provisioner->phase(), Provisioner::Phase(Provisioner::Downloading{QStringLiteral("emulator"), 0}));
    deliver("wrong");
    EXPECT_EQ(failure(), QStringLiteral("Downloaded emulator failed its checksum. Please try again."));

    archives->refused = QStringLiteral("emulator.zip");
    phases.clear();
    offer();
    provisioner->acceptAndInstall();
    settle();
    deliver("emulator");
    const auto was = [this](const Provisioner::Phase &phase) {
        return std::find(phases.begin(), phases.end(), phase) != phases.end();
    };
    EXPECT_TRUE(was(Provisioner::Downloading{QStringLiteral("emulator"), 0}));
    EXPECT_TRUE(was(Provisioner::Installing{QStringLiteral("Verifying emulator…")}));
    EXPECT_TRUE(was(Provisioner::Installing{QStringLiteral("Unpacking emulator…")}));
    EXPECT_EQ(failure(), RuntimeProvisionError::extract(QStringLiteral("emulator")).description());
}

TEST_F(ProvisionerTest, whatAKilledRunLeftHalfFetchedGoes)
{
    const auto rest = root() + QStringLiteral("/downloads/.tools.zip.x1.part");
    fakes.writeFile(rest.mid(fakes.home->path().size() + 1), "half");
    offer();
    provisioner->acceptAndInstall();
    settle();
    EXPECT_FALSE(QFile::exists(rest));
}

TEST_F(ProvisionerTest, aLicenceThatWouldLeaveItsFolderIsRefused)
{
    network->answers[tools]
        .body.replace("license id='a'", "license id='../../evil'")
        .replace("ref='a'", "ref='../../evil'");
    offer();
    provisioner->acceptAndInstall();
    settle();
    EXPECT_TRUE(failure().contains(QStringLiteral("a licence has no usable name"))) << failure().toStdString();
    EXPECT_TRUE(network->downloads.empty()) << "it is seen before anything is fetched or written";
    EXPECT_FALSE(QFile::exists(sdk()));
    EXPECT_FALSE(QFile::exists(sdk() + QStringLiteral("/../evil.txt")));
    EXPECT_FALSE(QFile::exists(root() + QStringLiteral("/evil.txt")));
}

TEST_F(ProvisionerTest, aDownloadWithoutAUsableNameIsRefused)
{
    network->answers[tools].body.replace("<url>tools.zip", "<url>x/.hidden");
    offer();
    provisioner->acceptAndInstall();
    settle();
    EXPECT_TRUE(failure().contains(QStringLiteral("a download has no usable name"))) << failure().toStdString();
    EXPECT_TRUE(network->downloads.empty());
}

TEST_F(ProvisionerTest, aVersionSelectedDuringTheInstallIsPlannedForAtItsEnd)
{
    offer();
    provisioner->acceptAndInstall();
    settle();
    fakes.settings->setValue(QStringLiteral("QuillnestAndroidAPI"), 33);
    for (const auto *content : {"tools", "emulator", "image"})
        deliver(content);
    EXPECT_TRUE(AndroidRuntimePaths::managed(fakes.platform, 35).isComplete());
    // Its list doesn't hold that image.
    EXPECT_EQ(
        failure(),
        QStringLiteral(
            "Google's package list has no download for system-images;android-33;default;x86_64 on 64-bit Linux"));
    fakes.settings->setValue(QStringLiteral("QuillnestAndroidAPI"), 35);
    provisioner->prepare();
    EXPECT_TRUE(is<Provisioner::Ready>());
}

TEST_F(ProvisionerTest, theProgramMayEndInTheMiddle)
{
    offer();
    provisioner->acceptAndInstall();
    settle();
    const auto running = network->downloads.at(0);
    provisioner.reset();
    EXPECT_NO_THROW(running->events.onWrite(1, 2));
    settle();
}

TEST(Sha1, isThatOfTheWholeFile)
{
    const auto fakes = fakePlatform();
    EXPECT_EQ(
        sha1OfFile(fakes.writeFile(QStringLiteral("abc"), "abc")),
        QStringLiteral("a9993e364706816aba3e25717850c26c9cd0d89d"));
    EXPECT_EQ(
        sha1OfFile(fakes.writeFile(QStringLiteral("empty"), "")),
        QStringLiteral("da39a3ee5e6b4b0d3255bfef95601890afd80709"));
    const QByteArray large(9 * 1024 * 1024 + 5, 'x');
    EXPECT_EQ(
        sha1OfFile(fakes.writeFile(QStringLiteral("large"), large)),
        QString::fromLatin1(QCryptographicHash::hash(large, QCryptographicHash::Sha1).toHex()));
    EXPECT_THROW(sha1OfFile(fakes.path(QStringLiteral("missing"))), std::runtime_error);
    EXPECT_THROW(sha1OfFile(fakes.home->path()), std::runtime_error);
}
