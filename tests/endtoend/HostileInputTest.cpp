#include "endtoend/EndToEnd.h"

#include <QDir>
#include <QFile>

namespace quillnest::driver
{

class HostileInputTest : public EndToEnd
{
protected:
    QString path(const QString &name) const { return desktop.home() + QLatin1Char('/') + name; }

    /// Writes a package that opens, with a label of four characters and a package name of its own.
    void write(const QString &file, const QString &label) const { program.writeTide(file, packageOf(label), label); }
    static QString packageOf(const QString &label)
    {
        return QStringLiteral("app.quillnest.samples.") + label.toLower();
    }

    void expectOpens(const QString &label) const
    {
        program.post(QStringLiteral("open:") + label);
        waitForStatus(QStringLiteral("Opened ") + label);
        program.waitForState(QStringLiteral("a picture of %1").arg(label), 30, [&label](const QJsonObject &state) {
            const auto open = windows(state);
            return open.size() == 1 && open[0][QStringLiteral("package")].toString() == packageOf(label)
                && open[0][QStringLiteral("framesShown")].toInt() > 0;
        });
    }

    QString failureOf(const QString &label) const
    {
        const auto before = program.log().count(QStringLiteral("open failed app=%1").arg(label));
        program.post(QStringLiteral("open:") + label);
        waitFor(QStringLiteral("the launch of %1 to fail").arg(label), 60, [&] {
            return program.log().count(QStringLiteral("open failed app=%1").arg(label)) > before;
        });
        program.waitForState(QStringLiteral("the sentence"), 10, [](const QJsonObject &state) {
            return text(state, "statusMessage").startsWith(QStringLiteral("Android launch failed: "));
        });
        return program.statusMessage().sliced(QStringLiteral("Android launch failed: ").size());
    }
};

TEST_F(HostileInputTest, packagesOfAnyNameShowTheirOwnLabelAndOpen)
{
    const QStringList names{
        QStringLiteral("two words.apk"),
        QStringLiteral("it's \"quoted\".apk"),
        QStringLiteral("line\nbreak.apk"),
        QStringLiteral("[x]*?.apk"),
        QStringLiteral("$(touch x).apk"),
        QStringLiteral("`touch x`;&|>x.apk"),
        QStringLiteral("-rf.apk"),
        QStringLiteral("back\\slash.apk"),
        QStringLiteral("%2e%s&amp;.apk"),
        QStringLiteral("größe \U0001F44D.apk"),
        QString(251, u'n') + QStringLiteral(".apk")};
    // Files that the third name means to a shell, and to whoever takes it for a pattern.
    write(path(QStringLiteral("xa.apk")), QStringLiteral("Lure"));
    program.start();
    for (qsizetype i = 0; i < names.size(); ++i) {
        const auto label = QStringLiteral("Nr%1").arg(i, 2, 10, QLatin1Char('0'));
        write(path(names[i]), label);
        program.addApps({path(names[i])});
        EXPECT_EQ(program.statusMessage(), QStringLiteral("Added ") + names[i]);
        const auto app = program.state().value(QStringLiteral("apps")).toArray().last();
        EXPECT_EQ(app[QStringLiteral("name")].toString().toStdString(), label.toStdString());
        expectOpens(label);
    }
    EXPECT_FALSE(QFile::exists(path(QStringLiteral("x")))) << "a name was run as a command";
}

TEST_F(HostileInputTest, aRelativePathThatLooksLikeAnOptionIsAPath)
{
    write(path(QStringLiteral("-rf.apk")), QStringLiteral("Dash"));
    program.start();
    program.post(QStringLiteral("add:-rf.apk"));
    waitForStatus(QStringLiteral("Added -rf.apk"));
    const auto app = program.state().value(QStringLiteral("apps")).toArray().first();
    EXPECT_EQ(app[QStringLiteral("sourcePath")].toString(), path(QStringLiteral("-rf.apk")))
        << "whatever folder is next";
    expectOpens(QStringLiteral("Dash"));
}

TEST_F(HostileInputTest, aNameThatIsNoTextIsSkippedWithASentence)
{
    write(path(QStringLiteral("plain.apk")), QStringLiteral("Odd."));
    program.start();
    desktop.run(
        QStringLiteral("sh"),
        {QStringLiteral("-c"),
         QStringLiteral("name=$(printf '%1/caf\\351.apk') && cp '%1/plain.apk' \"$name\" && '%2' post \"add:$name\"")
             .arg(desktop.home(), ProgramUnderTest::program(QStringLiteral("quillnestctl")))});
    program.waitForState(QStringLiteral("a sentence"), 20, [](const QJsonObject &state) {
        return text(state, "statusMessage").startsWith(QStringLiteral("Skipped "));
    });
    EXPECT_EQ(program.statusMessage(), QStringLiteral("Skipped caf\uFFFD.apk: its name is not valid text"));
    EXPECT_TRUE(program.state().value(QStringLiteral("apps")).toArray().isEmpty());
}

TEST_F(HostileInputTest, aPackageOnAReadOnlyMountOpensAndWithoutTheMountIsRefusedAndKept)
{
    const auto folder = path(QStringLiteral("disk"));
    QDir().mkpath(folder);
    write(path(QStringLiteral("disk.apk")), QStringLiteral("Disk"));
    // The mount is there for the program and its children alone; a word to the pipe takes it away.
    const auto pipe = path(QStringLiteral("unmount"));
    desktop.run(QStringLiteral("mkfifo"), {pipe});
    program.startThrough(
        QStringLiteral("unshare"),
        {QStringLiteral("--user"), QStringLiteral("--map-current-user"), QStringLiteral("--keep-caps"),
         QStringLiteral("--mount"), QStringLiteral("bash"), QStringLiteral("-ec"),
         QStringLiteral("mount -t tmpfs none disk; cp disk.apk disk; mount -o remount,ro disk; ! touch disk/x;"
                        "{ read word < unmount; umount --lazy disk; echo > unmount; } & exec \"$0\"")});
    const auto apk = folder + QStringLiteral("/disk.apk");
    ASSERT_FALSE(QFile::exists(apk)) << "the mount is seen outside";
    program.addApps({apk});
    expectOpens(QStringLiteral("Disk"));
    program.post(QStringLiteral("close-all"));
    waitForNoWindow();

    desktop.run(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("echo > unmount; read word < unmount")});
    EXPECT_TRUE(failureOf(QStringLiteral("Disk")).contains(apk)) << qPrintable(program.statusMessage());
    EXPECT_EQ(program.state().value(QStringLiteral("apps")).toArray().size(), 1);
}

TEST_F(HostileInputTest, aPackageNameThatIsACommandIsRefusedAndReachesNoShell)
{
    // 26 characters each, as the name that they replace, on a device that is less strict than any real one.
    const QStringList names{
        QStringLiteral("a.b;touch /data/local/pwn1"), QStringLiteral("$(touch /data/local/pwn-2)"),
        QStringLiteral("a.b|touch${IFS}/data/pwn-3"), QStringLiteral("a.b&&touch${IFS}/data/pwn4")};
    program.configureDevice({{QStringLiteral("faults"), QJsonObject{{QStringLiteral("any-package-name"), QString()}}}});
    set(QStringLiteral("QuillnestStopAndroidOnQuit"), false);
    program.start();
    for (qsizetype i = 0; i < names.size(); ++i) {
        const auto label = QStringLiteral("Bad%1").arg(i);
        const auto file = path(label + QStringLiteral(".apk"));
        program.writeTide(file, names[i], label);
        program.addApps({file});
        EXPECT_EQ(failureOf(label), QStringLiteral("Could not read the APK package name"));
    }
    EXPECT_EQ(program.device().value(QStringLiteral("packages")).toObject().count(), names.size());

    // The next start stops all apps that it finds, whatever their names.
    EXPECT_EQ(program.quit(), 0);
    program.start();
    waitForLog(QStringLiteral(" Android apps"));

    for (const auto &line : program.device().value(QStringLiteral("shellCommands")).toArray()) {
        // What the host asked for; what the device does with its own names is its own affair.
        if (line.toString().startsWith(QStringLiteral("$ "))) {
            EXPECT_FALSE(line.toString().contains(QStringLiteral("pwn"))) << qPrintable(line.toString());
        }
    }
    const auto made = desktop.run(
        QStringLiteral("adb"),
        {QStringLiteral("-s"), QStringLiteral("emulator-5556"), QStringLiteral("shell"),
         QStringLiteral("for f in /data/pwn* /data/local/pwn*; do if [ -e $f ]; then echo $f; fi; done")});
    EXPECT_EQ(made.toStdString(), "");
}

TEST_F(HostileInputTest, whateverAdbSaysTheUserIsToldInASentence)
{
    struct Case {
        const char *install;
        const char *sentence;
    };
    const Case cases[]{
        {"exit 1", "Android command failed"},
        {"printf 'caf\\351'; exit 1", "Android command failed"},
        {"kill -KILL $$", "Android command failed"},
        {"echo; echo 'adb: failed to install:  no room '; exit 1", "adb: failed to install:  no room"},
    };
    program.start();
    openTide();
    program.post(QStringLiteral("close-all"));
    waitForNoWindow();
    write(path(QStringLiteral("nr.apk")), QStringLiteral("Next"));
    program.addApps({path(QStringLiteral("nr.apk"))});
    for (const auto &[install, sentence] : cases) {
        program.replaceAdb(QStringLiteral("case \" $* \" in *' install '*) %1;; esac\nexec \"$adb\" \"$@\"")
                               .arg(QLatin1String(install)));
        EXPECT_EQ(failureOf(QStringLiteral("Next")), QLatin1String(sentence)) << install;
    }
    program.replaceAdb(QStringLiteral("exec \"$adb\" \"$@\""));
    expectOpens(QStringLiteral("Next"));
}

TEST_F(HostileInputTest, anAdbThatSaysFarTooMuchIsToldInALineWhileTheProgramAnswersAndItsMemoryComesBack)
{
    program.start();
    openTide();
    program.post(QStringLiteral("close-all"));
    waitForNoWindow();
    write(path(QStringLiteral("nr.apk")), QStringLiteral("Next"));
    program.addApps({path(QStringLiteral("nr.apk"))});
    const auto before = program.memory();
    const auto gate = path(QStringLiteral("gate"));
    const auto written = path(QStringLiteral("written"));
    program.replaceAdb(QStringLiteral("case \" $* \" in *' install '*)\n"
                                      "yes 'adb: far too much' | head -c 50000000; touch '%1'\n"
                                      "while [ ! -e '%2' ]; do sleep 0.05; done; exit 1;;\n"
                                      "esac\nexec \"$adb\" \"$@\"")
                           .arg(written, gate));
    program.post(QStringLiteral("open:Next"));
    waitFor(QStringLiteral("50 MB"), 60, [&written] { return QFile::exists(written); });
    EXPECT_EQ(program.statusMessage(), QStringLiteral("Starting Next…")) << "while the tool still runs";
    QFile(gate).open(QIODevice::WriteOnly);
    program.waitForState(QStringLiteral("a sentence"), 60, [](const QJsonObject &state) {
        return text(state, "statusMessage").startsWith(QStringLiteral("Android launch failed: adb: far too much"));
    });
    EXPECT_LT(program.statusMessage().size(), 5000);
    EXPECT_LT(program.log().size(), 100'000);
#ifndef __SANITIZE_ADDRESS__ // which keeps for a while what was freed
    waitFor(QStringLiteral("the memory to come back"), 20, [&] { return program.memory() < before + 40'000'000; });
#else
    Q_UNUSED(before);
#endif

    program.replaceAdb(QStringLiteral("exec \"$adb\" \"$@\""));
    expectOpens(QStringLiteral("Next"));
}

} // namespace quillnest::driver
