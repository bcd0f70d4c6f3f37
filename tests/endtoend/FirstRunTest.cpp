#include "driver/PackageServer.h"
#include "driver/SetupScreen.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QThread>

#include <gtest/gtest.h>

namespace quillnest::driver
{

namespace
{

const auto tools = QStringLiteral("platform-tools_r35.0.2-linux.zip");
const auto emulator = QStringLiteral("emulator-linux_x64-12325540.zip");
const auto image = QStringLiteral("x86_64-35_r01.zip");
const auto toolsList = QStringLiteral("repository2-3.xml");
const auto imagesList = QStringLiteral("sys-img2-3.xml");

} // namespace

/// A program on a bare home, and the server from which it downloads its runtime. Runs apart from other tests, in a
/// folder for temporary files of its own: what an archive wrote where it may not would be there.
class FirstRunTest : public ::testing::Test
{
protected:
    explicit FirstRunTest(int imageMegabytes = 4)
        : server(
            desktop,
            {QStringLiteral("--api"), QStringLiteral("35"), QStringLiteral("--image-bytes"),
             QString::number(imageMegabytes * 1'000'000)})
    {
    }
    ~FirstRunTest() override
    {
        if (HasFailure())
            std::fprintf(
                stderr, "---- setup\n%s---- log\n%s---- output\n%s----\n", qUtf8Printable(setup.log()),
                qUtf8Printable(program.log()), program.output().constData());
    }

    void start()
    {
        program.start();
        setup.open();
    }
    /// The way to the end, by the user's hand.
    void install()
    {
        setup.consent();
        setup.waitForPhase(QStringLiteral("ready"), 60);
    }
    void startAgain()
    {
        program.kill();
        start();
    }

    QString runtime() const { return program.dataFolder() + QStringLiteral("/Runtime"); }
    QStringList downloads() const
    {
        return QDir(runtime() + QStringLiteral("/downloads")).entryList(QDir::Files | QDir::Hidden);
    }
    /// How large a tool is when nothing of it is missing.
    static qint64 wholeSize(const QString &tool)
    {
        const auto name = tool.section(u'/', -1);
        const auto path = name == u"adb" ? QStandardPaths::findExecutable(name)
                                         : QStringLiteral(QUILLNEST_STANDIN_PROGRAMS "/") + name;
        return QFileInfo(QFileInfo(path).canonicalFilePath()).size();
    }
    QStringList staging() const
    {
        QStringList result;
        QDirIterator entries(
            program.dataFolder(), {QStringLiteral(".quillnest-unpack-*")}, QDir::Dirs | QDir::Hidden,
            QDirIterator::Subdirectories);
        while (entries.hasNext())
            result.append(entries.next());
        return result;
    }
    static QStringList escaped()
    {
        QStringList result;
        QDirIterator entries(
            QStringLiteral("/tmp"), {QStringLiteral("escaped*"), QStringLiteral("way-out")},
            QDir::AllEntries | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        while (entries.hasNext())
            result.append(entries.next());
        return result;
    }

    void openTide()
    {
        program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
        program.post(QStringLiteral("open:Tide"));
        const auto window = program.waitForPicture(60);
        EXPECT_EQ(window.value(QStringLiteral("package")).toString(), QStringLiteral("app.quillnest.samples.tide"));
    }

    TestDesktop desktop{{.sound = false}};
    PackageServer server;
    ProgramUnderTest program{desktop, ProgramUnderTest::Runtime::none};
    SetupScreen setup{program};
};

/// With an app at the end. A program that starts ends the streams that earlier ones have left on its machine, also
/// those of a namespace within it: these take turns with all others.
class FirstRunToAnAppTest : public FirstRunTest
{
};

TEST_F(FirstRunToAnAppTest, consentDownloadInstallAndAnAppOpens)
{
    server.fault(QStringLiteral("slow"), QStringLiteral("8000000"), QStringLiteral("x86_64-35"));
    start();
    setup.waitForPhase(QStringLiteral("needsAcceptance"));
    EXPECT_EQ(server.requests(), QStringList({toolsList, imagesList}));
    EXPECT_FALSE(QFileInfo::exists(runtime())) << "before anybody has consented";
    setup.consent();
    double fraction = 0;
    bool grew = true;
    waitFor(QStringLiteral("the image to be half here"), 30, [&] {
        const auto state = setup.state();
        if (state.value(QStringLiteral("phase")).toString() != QStringLiteral("downloading")
            || state.value(QStringLiteral("text")).toString() != QStringLiteral("Intel x86_64 Atom System Image"))
            return false;
        const double now = state.value(QStringLiteral("fraction")).toDouble();
        grew = grew && now >= fraction;
        fraction = now;
        return fraction >= 0.5;
    });
    EXPECT_TRUE(grew);
    setup.waitForPhase(QStringLiteral("ready"), 60);
    EXPECT_EQ(server.requests(), QStringList({toolsList, imagesList, tools, emulator, image}));
    for (const auto *name : {"platform-tools/adb", "emulator/emulator"})
        EXPECT_TRUE(QFileInfo(runtime() + QStringLiteral("/sdk/") + QLatin1String(name)).isExecutable()) << name;
    EXPECT_TRUE(QFileInfo::exists(runtime() + QStringLiteral("/sdk/licenses/android-sdk-license.txt")));
    EXPECT_TRUE(QFileInfo::exists(runtime() + QStringLiteral("/avd/Quillnest.avd/config.ini")));
    EXPECT_FALSE(QFileInfo::exists(runtime() + QStringLiteral("/downloads")));
    EXPECT_EQ(staging(), QStringList());

    QFile manifest(runtime() + QStringLiteral("/runtime-manifest.json"));
    ASSERT_TRUE(manifest.open(QIODevice::ReadOnly));
    const auto record = QJsonDocument::fromJson(manifest.readAll()).object();
    EXPECT_EQ(
        record.value(QStringLiteral("acceptedLicenses")).toArray(), QJsonArray{QStringLiteral("android-sdk-license")});
    EXPECT_EQ(record.value(QStringLiteral("packages")).toArray().size(), 3);

    openTide();
    // The device that shows it is the one that was downloaded.
    bool found = false;
    for (const auto &entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs))
        found = found
            || QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(entry))
                == runtime() + QStringLiteral("/sdk/emulator/emulator");
    EXPECT_TRUE(found);
}

TEST_F(FirstRunTest, listsThatAreMissingOrGarbledAreToldAndReadAgain)
{
    server.fault(QStringLiteral("missing"), {}, imagesList);
    start();
    EXPECT_EQ(
        setup.failure().toStdString(), "Could not read Google's Android package list: HTTP 404 for sys-img2-3.xml");
    server.clearFaults();
    server.fault(QStringLiteral("garbled"), {}, toolsList);
    startAgain();
    const auto words = setup.failure();
    EXPECT_TRUE(words.startsWith(QStringLiteral("Could not read Google's Android package list: ")))
        << qPrintable(words);
    EXPECT_FALSE(QFileInfo::exists(runtime()));
    server.clearFaults();
    setup.tryAgain();
    setup.waitForPhase(QStringLiteral("needsAcceptance"));
}

TEST_F(FirstRunTest, aServerThatIsGoneIsTold)
{
    desktop.setVariable(QStringLiteral("QUILLNEST_SDK_REPOSITORY"), QStringLiteral("http://127.0.0.1:9/"));
    start();
    EXPECT_TRUE(setup.failure().contains(QStringLiteral("refused"), Qt::CaseInsensitive));
    EXPECT_EQ(server.requests(), QStringList());
}

TEST_F(FirstRunTest, anArchiveThatIsMissingIsToldAndWhatHasComeIsKept)
{
    server.fault(QStringLiteral("missing"), {}, emulator);
    start();
    setup.consent();
    EXPECT_EQ(setup.failure().toStdString(), "Download failed: HTTP 404");
    EXPECT_EQ(downloads(), QStringList{tools});
    server.clearFaults();
    setup.tryAgain();
    install();
    // The tools are installed by now, so that nobody asks for them.
    EXPECT_EQ(
        server.requests(),
        QStringList({toolsList, imagesList, tools, emulator, toolsList, imagesList, emulator, image}));
}

TEST_F(FirstRunTest, aWrongChecksumIsToldAndNothingOfItInstalled)
{
    server.fault(QStringLiteral("wrong-checksum"), {}, emulator);
    start();
    setup.consent();
    EXPECT_EQ(setup.failure().toStdString(), "Downloaded Android Emulator failed its checksum. Please try again.");
    EXPECT_EQ(downloads(), QStringList({emulator, tools}));
    EXPECT_FALSE(QFileInfo::exists(runtime() + QStringLiteral("/sdk/emulator")));
    server.clearFaults();
    setup.tryAgain();
    install();
    EXPECT_EQ(server.requests().count(emulator), 2);
}

TEST_F(FirstRunTest, aConnectionThatIsCutIsToldAndLeavesNothingHalf)
{
    server.fault(QStringLiteral("cut"), QStringLiteral("100000"), emulator);
    start();
    setup.consent();
    const auto words = setup.failure();
    EXPECT_TRUE(words.startsWith(QStringLiteral("Google's servers can't be reached. "))) << qPrintable(words);
    EXPECT_TRUE(words.contains(QStringLiteral("(Download failed: "))) << qPrintable(words);
    EXPECT_EQ(downloads(), QStringList{tools});
    server.clearFaults();
    setup.tryAgain();
    install();
}

TEST_F(FirstRunTest, aDownloadOfUnknownLengthComesThrough)
{
    server.fault(QStringLiteral("no-length"), {}, QStringLiteral(".zip"));
    start();
    install();
    // Such a server ends the connection, and whoever asked on it in that moment asks again.
    auto asked = server.requests();
    asked.removeDuplicates();
    EXPECT_EQ(asked.size(), 5);
}

TEST_F(FirstRunTest, archivesThatLeadOutAreRefused)
{
    for (const auto *kind : {"dotdot", "absolute", "link"}) {
        SCOPED_TRACE(kind);
        server.fault(QStringLiteral("escape"), QLatin1String(kind), emulator);
        if (program.isRunning())
            startAgain();
        else
            start();
        setup.consent();
        EXPECT_EQ(setup.failure().toStdString(), "Could not unpack Android Emulator");
        EXPECT_EQ(escaped(), QStringList());
        EXPECT_EQ(staging(), QStringList());
        EXPECT_FALSE(QFileInfo::exists(runtime() + QStringLiteral("/sdk/emulator")));
        server.clearFaults();
    }
    setup.tryAgain();
    install();
}

TEST_F(FirstRunTest, aFullDiskIsToldAndLeavesNothingHalf)
{
    // Only in a namespace of its own: what is mounted there is gone with it.
    if (!qEnvironmentVariableIsSet("QUILLNEST_APART"))
        throw DriverError(QStringLiteral("this needs to be run by tests/endtoend/apart"));
    QDir().mkpath(program.dataFolder());
    const auto disk = [this](const QString &size) {
        desktop.run(
            QStringLiteral("mount"),
            {QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"), QStringLiteral("size=") + size,
             QStringLiteral("tmpfs"), program.dataFolder()});
    };
    const auto grow = [this](const QString &size) {
        desktop.run(
            QStringLiteral("mount"),
            {QStringLiteral("-o"), QStringLiteral("remount,size=") + size, program.dataFolder()});
    };
    // Room for the tools, and for half of what comes next.
    disk(QStringLiteral("2m"));
    start();
    setup.consent();
    EXPECT_EQ(
        setup.failure().toStdString(),
        "The disk is full. Make room on it, and try again. (Download failed: No space left on device)");
    EXPECT_EQ(downloads(), QStringList{tools});
    EXPECT_EQ(staging(), QStringList());

    // Room for the archive, but not for what is in it; how large that is depends on how the stand-in was built.
    static const QRegularExpression plan(QStringLiteral("plan emulator \\S+ (\\d+) bytes"));
    const auto archive = plan.match(setup.log()).captured(1).toLongLong();
    const auto content = wholeSize(QStringLiteral("emulator/emulator"));
    ASSERT_GT(archive, 0);
    constexpr qint64 mebibyte = 1024 * 1024;
    grow(QString::number(2 * mebibyte + archive + content / 2));
    setup.tryAgain();
    setup.consent();
    EXPECT_EQ(setup.failure().toStdString(), "Could not unpack Android Emulator");
    EXPECT_EQ(downloads(), QStringList({emulator, tools}));
    EXPECT_EQ(staging(), QStringList());
    EXPECT_FALSE(QFileInfo::exists(runtime() + QStringLiteral("/sdk/emulator")));

    grow(QString::number(64 * mebibyte + archive + 2 * content));
    setup.tryAgain();
    install();
    // The one that didn't fit and the one that did: what was there was not fetched again.
    EXPECT_EQ(server.requests().count(emulator), 2);
}

TEST_F(FirstRunTest, killedWhileDownloadingTheNextStartFetchesOnlyWhatIsMissing)
{
    server.fault(QStringLiteral("slow"), QStringLiteral("500000"), image);
    start();
    setup.consent();
    waitFor(QStringLiteral("the image to be on its way"), 30, [this] {
        const auto state = setup.state();
        return state.value(QStringLiteral("text")).toString().contains(QStringLiteral("System Image"))
            && state.value(QStringLiteral("fraction")).toDouble() > 0;
    });
    EXPECT_EQ(downloads().filter(QStringLiteral(".part")).size(), 1);
    program.kill();
    server.clearFaults();
    start();
    install();
    EXPECT_EQ(server.requests().count(emulator), 1);
    EXPECT_EQ(server.requests().count(image), 2);
    EXPECT_FALSE(QFileInfo::exists(runtime() + QStringLiteral("/downloads")));
}

TEST_F(FirstRunTest, aQuitDuringTheDownloadEndsAtOnceAndTheNextStartGoesOn)
{
    server.fault(QStringLiteral("slow"), QStringLiteral("500000"), image);
    start();
    setup.consent();
    waitFor(QStringLiteral("the image to be on its way"), 30, [this] {
        return setup.state().value(QStringLiteral("text")).toString().contains(QStringLiteral("System Image"))
            && setup.state().value(QStringLiteral("fraction")).toDouble() > 0;
    });
    EXPECT_EQ(program.quit(12), 0);
    EXPECT_FALSE(QFileInfo::exists(runtime() + QStringLiteral("/sdk/system-images/android-35/default/x86_64")));
    server.clearFaults();
    start();
    install();
    EXPECT_EQ(server.requests().count(emulator), 1);
}

TEST_F(FirstRunToAnAppTest, killedAtAnyMomentAToolIsWholeOrNotThere)
{
    const auto whole = [this](const QString &tool) {
        const QFileInfo file(runtime() + QStringLiteral("/sdk/") + tool);
        return !file.exists() || (file.isExecutable() && file.size() == wholeSize(tool));
    };
    // Throughout the verifying, the unpacking and what is between them.
    for (int moment = 0; moment < 8; ++moment) {
        SCOPED_TRACE(moment);
        start();
        setup.waitForPhase(QStringLiteral("needsAcceptance"));
        setup.consent();
        QThread::msleep(static_cast<unsigned long>(15 * moment));
        program.kill();
        EXPECT_TRUE(whole(QStringLiteral("platform-tools/adb")));
        EXPECT_TRUE(whole(QStringLiteral("emulator/emulator")));
        if (QFileInfo::exists(runtime() + QStringLiteral("/avd/Quillnest.ini")))
            QFile::remove(runtime() + QStringLiteral("/avd/Quillnest.ini"));
    }
    start();
    install();
    EXPECT_EQ(staging(), QStringList());
    EXPECT_EQ(downloads(), QStringList());
    openTide();
}

/// With an image that takes a while at every step.
class FirstRunOfALargeImageTest : public FirstRunTest
{
protected:
    FirstRunOfALargeImageTest() : FirstRunTest(200) { }

    void killWhile(const QString &step)
    {
        setup.consent();
        waitFor(step, 60, [this, &step] {
            return setup.state().value(QStringLiteral("text")).toString().startsWith(step + QStringLiteral(" Intel"));
        });
        program.kill();
        EXPECT_FALSE(QFileInfo::exists(runtime() + QStringLiteral("/sdk/system-images/android-35/default/x86_64")));
        EXPECT_FALSE(QFileInfo::exists(runtime() + QStringLiteral("/avd")));
    }
};

TEST_F(FirstRunOfALargeImageTest, killedWhileVerifyingAndUnpackingTheNextStartFetchesNothing)
{
    start();
    killWhile(QStringLiteral("Verifying"));
    start();
    killWhile(QStringLiteral("Unpacking"));
    EXPECT_EQ(staging().size(), 1);
    start();
    install();
    EXPECT_EQ(server.requests().count(tools), 1);
    EXPECT_EQ(server.requests().count(emulator), 1);
    EXPECT_EQ(server.requests().count(image), 1);
    EXPECT_EQ(staging(), QStringList());
    EXPECT_EQ(
        QFileInfo(runtime() + QStringLiteral("/sdk/system-images/android-35/default/x86_64/system.img")).size(),
        200'000'000);
}

TEST_F(FirstRunOfALargeImageTest, aQuitWhileAnArchiveIsUnpackedEndsAtOnceAndLeavesNothingHalf)
{
    start();
    setup.consent();
    waitFor(QStringLiteral("the unpacking"), 60, [this] {
        return setup.state().value(QStringLiteral("text")).toString().startsWith(QStringLiteral("Unpacking Intel"));
    });
    EXPECT_EQ(program.quit(12), 0);
    // It may have come to its end meanwhile.
    const QFileInfo system(runtime() + QStringLiteral("/sdk/system-images/android-35/default/x86_64/system.img"));
    EXPECT_EQ(system.exists() ? system.size() : 200'000'000, 200'000'000);
    start();
    install();
    EXPECT_EQ(staging(), QStringList());
}

TEST_F(FirstRunTest, whatHasBeenDownloadedIsNotFetchedAgain)
{
    start();
    setup.waitForPhase(QStringLiteral("needsAcceptance"));
    // Everything comes, but can't be installed.
    server.fault(QStringLiteral("stall"), QStringLiteral("100"), image);
    setup.consent();
    waitFor(QStringLiteral("the image to be asked for"), 30, [this] { return server.requests().contains(image); });
    program.kill();
    server.clearFaults();
    // The archives lie there, and nothing that was in them.
    QDir(runtime() + QStringLiteral("/sdk")).removeRecursively();
    start();
    install();
    EXPECT_EQ(server.requests().count(tools), 1);
    EXPECT_EQ(server.requests().count(emulator), 1);
    EXPECT_EQ(server.requests().count(image), 2);
}

} // namespace quillnest::driver
