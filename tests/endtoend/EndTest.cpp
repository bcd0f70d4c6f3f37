#include "endtoend/EndToEnd.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <sys/stat.h>

#include <csignal>

namespace quillnest::driver
{

/// Whatever is under way, the end comes, and nobody of ours stays behind.
class EndTest : public EndToEnd
{
protected:
    /// Those with this text in their command line, by process id.
    static std::map<int, QString> processes(const QString &text)
    {
        std::map<int, QString> result;
        for (const auto &entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
            bool isProcess = false;
            const int id = entry.toInt(&isProcess);
            QFile file(QStringLiteral("/proc/%1/cmdline").arg(entry));
            if (!isProcess || !file.open(QIODevice::ReadOnly))
                continue;
            const auto line = QString::fromUtf8(file.readAll()).replace(QChar(u'\0'), QLatin1Char(' '));
            if (line.contains(text))
                result.emplace(id, line);
        }
        return result;
    }

    static int emulator()
    {
        const auto found = processes(QStringLiteral("@Quillnest -port 5556"));
        return found.empty() ? 0 : found.begin()->first;
    }
    /// The machine stands still, and with it everything in it; adb waits for an answer.
    static void freeze() { ::kill(emulator(), SIGSTOP); }

    void answerAdb(const QString &what) const
    {
        program.replaceAdb(QStringLiteral("case \"$*\" in %1) exec sleep 3600;; esac\nexec \"$adb\" \"$@\"").arg(what));
    }

    /// Ends the program by a signal, within twelve seconds, and looks for those whom it has left behind.
    void expectEnd(int signal = SIGTERM)
    {
        QElapsedTimer took;
        took.start();
        ::kill(static_cast<pid_t>(program.processId()), signal);
        EXPECT_EQ(program.waitForEnd(12), 0);
        std::printf("ended after %lld ms\n", static_cast<long long>(took.elapsed()));
        expectNobodyLeft();
    }
    static void expectNobodyLeft()
    {
        const auto left = [] {
            // The server of adb is nobody's child and stays for the next start.
            auto adb = processes(QStringLiteral("platform-tools/adb"));
            std::erase_if(
                adb, [](const auto &process) { return process.second.contains(QStringLiteral("fork-server")); });
            return !adb.empty() || !processes(QStringLiteral("sleep 3600")).empty();
        };
        // What has been killed is gone a moment later.
        waitFor(QStringLiteral("no child to be left"), 1, [&] { return !left(); });
    }
    void waitForNoDevice() const
    {
        waitFor(QStringLiteral("the device to be gone"), 5, [this] { return emulator() == 0; });
    }
};

TEST_F(EndTest, everySignalThatAsksForItBringsTheEndAndTheDevicesToo)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        program.start();
        if (signal == SIGTERM)
            program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
        program.post(QStringLiteral("open:Tide"));
        program.waitForPicture(60);
        expectEnd(signal);
        waitForNoDevice();
    }
}

TEST_F(EndTest, aTerminalsInterruptEndsTheProgramAndNotADeviceThatIsToStay)
{
    set(QStringLiteral("QuillnestStopAndroidOnQuit"), false);
    // A group of its own, as a shell makes one for what runs in front.
    program.startThrough(QStringLiteral("setsid"), {});
    openTide();
    ::kill(-static_cast<pid_t>(program.processId()), SIGINT);
    EXPECT_EQ(program.waitForEnd(12), 0);
    expectNobodyLeft();
    EXPECT_NE(emulator(), 0);
    EXPECT_TRUE(program.isDeviceRunning());
}

TEST_F(EndTest, aDeviceThatStandsStillIsEndedByItsProcess)
{
    program.start();
    openTide();
    // Others' machines, by the same words.
    const auto machine = desktop.start(
        QStringLiteral("bash"),
        {QStringLiteral("-c"), QStringLiteral("exec -a qemu-system-x86_64 tail -f /dev/null --pid=$PPID -s 1")});
    const auto other = desktop.start(
        QStringLiteral("bash"),
        {QStringLiteral("-c"), QStringLiteral("while :; do sleep 0.2; done"), QStringLiteral("emulator"),
         QStringLiteral("@Pixel_7 -port 5556")});
    freeze();
    expectEnd();
    waitForNoDevice();
    EXPECT_TRUE(program.log().contains(QStringLiteral("Android does not answer - ending its process")));
    for (auto *process : {machine.get(), other.get()}) {
        EXPECT_EQ(process->state(), QProcess::Running);
        process->kill();
        process->waitForFinished(5000);
    }
}

TEST_F(EndTest, aGuestThatAnswersNoShellIsEndedByItsConsole)
{
    program.start();
    openTide();
    answerAdb(QStringLiteral("*shell*"));
    expectEnd();
    waitForNoDevice();
    EXPECT_FALSE(program.log().contains(QStringLiteral("ending its process")));
}

TEST_F(EndTest, anAdbThatNeverAnswersHoldsNothingUp)
{
    program.start();
    openTide();
    answerAdb(QStringLiteral("*"));
    expectEnd();
    waitForNoDevice();
}

TEST_F(EndTest, anAdbThatNeverAnswersHoldsNoStartAndNoLaunchUpAtTheEnd)
{
    answerAdb(QStringLiteral("*"));
    program.start();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
    program.post(QStringLiteral("open:Tide"));
    waitForStatus(QStringLiteral("Starting Tide…"));
    expectEnd();
}

TEST_F(EndTest, aBootUnderWayEndsWithTheProgram)
{
    program.configureDevice({{QStringLiteral("bootSeconds"), 3600}});
    program.start();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
    program.post(QStringLiteral("open:Tide"));
    waitFor(QStringLiteral("the emulator"), 20, [] { return emulator() != 0; });
    expectEnd();
    waitForNoDevice();
}

TEST_F(EndTest, aWindowThatIsBeingOpenedEndsWithTheProgram)
{
    program.configureDevice({{QStringLiteral("faults"), QJsonObject{{QStringLiteral("never-connect"), QString()}}}});
    program.start();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
    program.post(QStringLiteral("open:Tide"));
    waitForStatus(QStringLiteral("Opened Tide"), 60);
    expectEnd();
    waitForNoDevice();
}

TEST_F(EndTest, aDiskThatDoesNotAnswerHoldsNothingUp)
{
    program.start();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
    QDir icons(program.dataFolder() + QStringLiteral("/Icons"));
    waitFor(QStringLiteral("the icon"), 20, [&] { return icons.entryList(QDir::Files).size() == 1; });
    const auto icon = icons.filePath(icons.entryList(QDir::Files).first());
    ASSERT_EQ(program.quit(), 0);
    // Whoever reads it now waits for ever.
    QFile::remove(icon);
    ASSERT_EQ(::mkfifo(QFile::encodeName(icon).constData(), 0600), 0);
    program.start();
    program.post(QStringLiteral("home"));
    program.waitForTile(QStringLiteral("Tide"));
    expectEnd();
}

} // namespace quillnest::driver
