#include "endtoend/EndToEnd.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>

namespace quillnest::driver
{

/// The settings file between the program, quillnestctl and an editor.
class SettingsTest : public EndToEnd
{
protected:
    QString file
        = desktop.environment().value(QStringLiteral("XDG_CONFIG_HOME")) + QStringLiteral("/Quillnest/settings.json");

    QByteArray read() const
    {
        QFile source(file);
        return source.open(QIODevice::ReadOnly) ? source.readAll() : QByteArray();
    }

    void write(const QByteArray &content) const
    {
        QFile target(file);
        ASSERT_TRUE(target.open(QIODevice::WriteOnly) && target.write(content) == content.size());
    }

    QString sample(const char *name) const { return ProgramUnderTest::sample(QLatin1String(name)); }

    qsizetype apps() const { return program.state().value(QStringLiteral("apps")).toArray().size(); }
};

TEST_F(SettingsTest, aSettingChangedFromOutsideReachesTheRunningProgram)
{
    program.start();
    program.addApps({sample("tide"), sample("ember")});
    set(QStringLiteral("QuillnestSingleApp"), false);
    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture(60);
    program.post(QStringLiteral("open:Ember"));
    program.waitForState(
        QStringLiteral("two windows"), 30, [](const QJsonObject &state) { return windows(state).size() == 2; });

    // And by hand, in an editor.
    write(read().replace("\"QuillnestSingleApp\": false", "\"QuillnestSingleApp\": true"));
    program.addApps({sample("lantern")});
    program.post(QStringLiteral("open:Lantern"));
    program.waitForState(
        QStringLiteral("one window"), 30, [](const QJsonObject &state) { return windows(state).size() == 1; });
}

TEST_F(SettingsTest, aValueOfTheWrongTypeCountsAsAbsent)
{
    set(QStringLiteral("QuillnestSingleApp"), QStringLiteral("no"));
    set(QStringLiteral("QuillnestAndroidAPI"), QStringLiteral("33"));
    program.start();
    program.addApps({sample("tide"), sample("ember")});
    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture(60);
    program.post(QStringLiteral("open:Ember"));
    waitForStatus(QStringLiteral("Opened Ember"), 60);
    program.waitForState(
        QStringLiteral("one window"), 30, [](const QJsonObject &state) { return windows(state).size() == 1; });
}

TEST_F(SettingsTest, aSettingsFileCutInHalfIsKeptAsideSaidInTheLogAndTheProgramStartsWithDefaults)
{
    program.start();
    program.addApps({sample("tide")});
    program.quit();
    const auto half = read().left(read().size() / 2);
    write(half);
    program.start();
    EXPECT_EQ(apps(), 0);
    const auto line = QStringLiteral("settings unreadable, kept aside as ");
    waitForLog(line);
    auto aside = program.log();
    aside = aside.mid(aside.indexOf(line) + line.size());
    aside.truncate(aside.indexOf(QLatin1Char('\n')));
    QFile kept(aside);
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly)) << aside.toStdString();
    EXPECT_EQ(kept.readAll(), half);
    // And the program works.
    program.addApps({sample("ember")});
    EXPECT_EQ(apps(), 1);
}

TEST_F(SettingsTest, aFullDiskKeepsTheOldLibraryAndTheStatusLineSaysSo)
{
    // Only in a namespace of its own: what is mounted there is gone with it.
    if (!qEnvironmentVariableIsSet("QUILLNEST_APART"))
        throw DriverError(QStringLiteral("this needs to be run by tests/endtoend/apart"));
    const auto folder = QFileInfo(file).path();
    QDir().mkpath(folder);
    desktop.run(
        QStringLiteral("mount"),
        {QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"), QStringLiteral("size=256k"),
         QStringLiteral("tmpfs"), folder});
    program.start();
    program.addApps({sample("tide")});
    const auto before = read();
    QFile filler(folder + QStringLiteral("/filler"));
    ASSERT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (filler.write(QByteArray(4096, 'x')) == 4096) { }
    program.post(QStringLiteral("add:%1").arg(sample("ember")));
    waitForStatus(QStringLiteral("Could not save the library: No space left on device"));
    EXPECT_EQ(apps(), 1);
    EXPECT_EQ(read(), before);
    // There is space again.
    ASSERT_TRUE(filler.remove());
    program.addApps({sample("ember")});
    program.kill();
    program.start();
    EXPECT_EQ(apps(), 2);
}

} // namespace quillnest::driver
