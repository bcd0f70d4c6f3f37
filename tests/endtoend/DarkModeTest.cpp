#include "endtoend/EndToEnd.h"

namespace quillnest::driver
{

/// A desktop whose appearance is a setting of GNOME's that its own portal tells of.
class DarkModeTest : public EndToEnd
{
protected:
    DarkModeTest() : EndToEnd(withPortal()) { }

    static TestDesktop::Options withPortal()
    {
        TestDesktop::Options options;
        options.portal = true;
        return options;
    }

    void setDesktop(const char *scheme) const
    {
        desktop.run(
            QStringLiteral("gsettings"),
            {QStringLiteral("set"), QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("color-scheme"),
             QLatin1String(scheme)});
    }

    bool deviceIsDark() const { return program.device().value(QStringLiteral("nightMode")).toBool(); }

    void waitForDevice(bool dark) const
    {
        waitFor(dark ? QStringLiteral("a dark device") : QStringLiteral("a light device"), 20, [this, dark] {
            const auto night = program.device().value(QStringLiteral("nightMode"));
            return night.isBool() && night.toBool() == dark;
        });
    }

    /// What the device was told of its appearance, oldest first.
    QStringList toldDevice() const
    {
        QStringList told;
        for (const auto &line : program.device().value(QStringLiteral("shellCommands")).toArray()) {
            if (line.toString().startsWith(QStringLiteral("$ cmd uimode night ")))
                told += line.toString().section(QLatin1Char(' '), -1);
        }
        return told;
    }
};

TEST_F(DarkModeTest, theDeviceFollowsTheDesktopToDarkAndBack)
{
    program.start();
    openTide();
    EXPECT_FALSE(deviceIsDark());
    setDesktop("prefer-dark");
    waitForDevice(true);
    waitForLog(QStringLiteral("dark mode: android night=yes"));
    setDesktop("prefer-light");
    waitForDevice(false);
    setDesktop("prefer-dark");
    waitForDevice(true);
    setDesktop("default");
    waitForDevice(false);
}

TEST_F(DarkModeTest, onADarkDesktopTheDeviceIsDarkFromItsBootOn)
{
    setDesktop("prefer-dark");
    program.start();
    program.post(QStringLiteral("home"));
    program.waitForState(QStringLiteral("Android to be ready"), 60, [](const QJsonObject &state) {
        return text(state, "androidState") == QStringLiteral("ready");
    });
    EXPECT_TRUE(deviceIsDark());
    EXPECT_EQ(toldDevice(), QStringList{QStringLiteral("yes")});
}

TEST_F(DarkModeTest, withoutTheSettingTheDeviceStaysAsItIs)
{
    set(QStringLiteral("QuillnestSyncDarkMode"), false);
    program.noteAdbCalls();
    program.start();
    openTide();
    // A change has been passed over once the program has looked whether there is a device to tell.
    setDesktop("prefer-dark");
    waitForLooks(1);
    setDesktop("prefer-light");
    waitForLooks(1);
    EXPECT_FALSE(deviceIsDark());
    EXPECT_EQ(toldDevice(), QStringList());

    set(QStringLiteral("QuillnestSyncDarkMode"), true);
    setDesktop("prefer-dark");
    waitForDevice(true);
}

} // namespace quillnest::driver
