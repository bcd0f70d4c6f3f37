#include "endtoend/EndToEnd.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>

namespace quillnest::driver
{

/// What is somebody else's is neither ended nor changed nor believed.
class OthersTest : public EndToEnd
{
protected:
    /// Starts a developer's own emulator, of the same user, where ours would be.
    void startPixel()
    {
        const auto avds = desktop.home() + QStringLiteral("/avds");
        QDir().mkpath(avds + QStringLiteral("/Pixel_7.avd"));
        const auto write = [](const QString &path, const QString &text) {
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(text.toUtf8());
        };
        write(avds + QStringLiteral("/Pixel_7.ini"), QStringLiteral("path=%1/Pixel_7.avd\n").arg(avds));
        write(
            avds + QStringLiteral("/Pixel_7.avd/config.ini"),
            QStringLiteral("image.sysdir.1=system-images/android-35/default/x86_64/\n"));
        const auto sdk = program.dataFolder() + QStringLiteral("/Runtime/sdk");
        const auto set = [](const QString &name, const QString &value) { return name + QLatin1Char('=') + value; };
        pixel = desktop.start(
            QStringLiteral("env"),
            {set(QStringLiteral("ANDROID_SDK_ROOT"), sdk), set(QStringLiteral("ANDROID_HOME"), sdk),
             set(QStringLiteral("ANDROID_AVD_HOME"), avds),
             set(QStringLiteral("QUILLNEST_STANDIN_SOCKET"), desktop.home() + QStringLiteral("/pixel.sock")),
             sdk + QStringLiteral("/emulator/emulator"), QStringLiteral("@Pixel_7"), QStringLiteral("-port"),
             QStringLiteral("5556"), QStringLiteral("-no-window")});
        waitFor(QStringLiteral("the other emulator"), 30, [this] {
            return desktop.run(QStringLiteral("adb"), {QStringLiteral("devices")}).contains("emulator-5556\tdevice")
                && shell(QStringLiteral("getprop sys.boot_completed")).trimmed() == "1";
        });
    }
    QByteArray adb(const QStringList &arguments) const
    {
        return desktop.run(
            QStringLiteral("adb"), QStringList{QStringLiteral("-s"), QStringLiteral("emulator-5556")} + arguments);
    }
    QByteArray shell(const QString &command) const { return adb({QStringLiteral("shell"), command}); }
    QJsonObject pixelState() const
    {
        const auto text = desktop.run(
            ProgramUnderTest::program(QStringLiteral("standinctl")),
            {QStringLiteral("--socket"), desktop.home() + QStringLiteral("/pixel.sock"), QStringLiteral("state")});
        return QJsonDocument::fromJson(text).object();
    }

    std::unique_ptr<QProcess> pixel;
};

TEST_F(OthersTest, anotherEmulatorOnOurPortIsLeftAloneAndSaidToBeThere)
{
    startPixel();
    adb({QStringLiteral("install"), ProgramUnderTest::sample(QStringLiteral("ember"))});
    set(QStringLiteral("QuillnestAdBlock"), true);
    const auto before = shell(QStringLiteral("settings list global"));
    program.start();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
    program.post(QStringLiteral("open:Tide"));
    waitForStatus(QStringLiteral("Android launch failed: Another Android emulator is using port 5556, which Quillnest "
                                 "needs. Quit it and try again."));
    // A switch of the settings and the uninstalling are for our device alone.
    set(QStringLiteral("QuillnestAdBlock"), false);
    set(QStringLiteral("QuillnestMicCamera"), true);
    EXPECT_NE(text(program.state(), "androidState"), QStringLiteral("ready"));
    EXPECT_EQ(program.quit(), 0);

    EXPECT_EQ(pixel->state(), QProcess::Running);
    EXPECT_EQ(shell(QStringLiteral("settings list global")), before);
    const auto state = pixelState();
    EXPECT_EQ(text(state, "avd"), QStringLiteral("Pixel_7"));
    EXPECT_TRUE(state.value(QStringLiteral("forceStopped")).toObject().isEmpty());
    EXPECT_TRUE(shell(QStringLiteral("pm list packages -3")).contains("ember"));
    EXPECT_FALSE(shell(QStringLiteral("pm list packages -3")).contains("tide"));

    // Once it has gone our own starts.
    pixel->terminate();
    pixel->waitForFinished(10000);
    waitFor(QStringLiteral("the port to be free"), 20, [this] {
        return !desktop.run(QStringLiteral("adb"), {QStringLiteral("devices")}).contains("emulator-5556");
    });
    program.start();
    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture(60);
}

} // namespace quillnest::driver
