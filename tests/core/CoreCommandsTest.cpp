#include "core/CoreCommands.h"

#include "base/CommandDispatcher.h"

#include "LaunchFixture.h"
#include "windows/ControlBytes.h"
#include "windows/KeyboardFocus.h"

using namespace quillnest;

namespace
{

class CoreCommandsTest : public LaunchFixture
{
protected:
    CoreCommandsTest()
    {
        deviceIsUp();
        handleCoreCommands(dispatcher, *store, *registry);
    }

    void run(const QString &command)
    {
        dispatcher.run(command);
        fakes.settle();
    }

    CommandDispatcher dispatcher{log};
};

} // namespace

TEST_F(CoreCommandsTest, everyCommandIsLoggedAndTextThatIsNoneDoesNothingElse)
{
    addApp(QStringLiteral("Moon"));
    registry->homePanel().makeContent = [] { return new QWidget; };
    fakes.processes->forget();
    const auto keys = fakes.settings->keys();
    for (const auto *text :
         {"", "no command", "open", "open Moon", "Open:Moon", " open:Moon", "themes:x", "theme", "back ", "home ",
          "homes", "adblock-on:", "hide:", "close-all:Moon", "android-version:abc", "shortcut:x", "pin:"}) {
        run(QString::fromUtf8(text));
        EXPECT_EQ(logLines().last(), QStringLiteral("command %1").arg(QLatin1String(text)));
    }
    EXPECT_TRUE(fakes.processes->calls().empty());
    EXPECT_EQ(fakes.settings->keys(), keys);
    EXPECT_EQ(store->launchingAppID(), std::nullopt);
    EXPECT_EQ(registry->menuBarPopupFrame(), std::nullopt);
}

TEST_F(CoreCommandsTest, aSnapshotOfThePanelIsWritten)
{
    store->paintPanel = [] { return QImage(30, 20, QImage::Format_RGB32); };
    run(QStringLiteral("snapshot-menu"));
    EXPECT_TRUE(QFile::exists(fakes.path(QStringLiteral("Logs/Quillnest/snapshots/menu-panel.png"))));
}

TEST_F(CoreCommandsTest, openTakesTheFirstMatchInStoredOrder)
{
    addApp(QStringLiteral("Zebra Moon"));
    const auto moon = addApp(QStringLiteral("Moon"));
    store->toggleFavorite(moon);
    dispatcher.run(QStringLiteral("open:moon"));
    EXPECT_EQ(store->launchingAppID(), store->apps()[0].id);
}

TEST_F(CoreCommandsTest, openWithAnEmptyOrAnUnknownNameMatchesNoEntry)
{
    addApp(QStringLiteral("Moon"));
    for (const auto *text : {"open:", "open:star", "open: Moon"}) {
        dispatcher.run(QString::fromUtf8(text));
        EXPECT_EQ(store->launchingAppID(), std::nullopt) << text;
    }
}

TEST_F(CoreCommandsTest, addTakesTheRestOfTheTextAsAPath)
{
    const auto path = putPackage(QStringLiteral("Apps/a: b %20.apk"), "org.example.app", "App");
    run(QStringLiteral("add:") + path);
    ASSERT_EQ(store->apps().size(), 1U);
    EXPECT_EQ(store->apps()[0].sourcePath, path);
}

TEST_F(CoreCommandsTest, withoutAWindowItsCommandsDoNothing)
{
    fakes.pasteboard->put(QStringLiteral("text"));
    for (const auto *text : {"back", "paste", "copy", "hide", "close-all"})
        run(QString::fromUtf8(text));
    EXPECT_EQ(logLines().filter(QStringLiteral("command ")).size(), 5);
    EXPECT_EQ(logLines().filter(QStringLiteral("close package")).size(), 0);
}

TEST_F(CoreCommandsTest, backPasteAndCopyGoToTheWindow)
{
    auto &session = open(addApp(QStringLiteral("Moon")));
    fakes.processes->on(QStringLiteral("grep ResumedActivity"), QByteArray(" u0 org.example.moon/.MainActivity\n"));
    // A window that gets the keyboard sends the clipboard, which is not what this is about.
    ASSERT_TRUE(giveKeyboard(fakes, session.panel()));
    loopback.connect(session);
    loopback.sent(session);
    run(QStringLiteral("back"));
    EXPECT_EQ(loopback.sent(session), bytes::back());
    run(QStringLiteral("copy"));
    EXPECT_EQ(loopback.sent(session), QByteArray::fromHex("0801"));
    fakes.pasteboard->put(QStringLiteral("text"));
    run(QStringLiteral("paste"));
    EXPECT_EQ(loopback.sent(session), bytes::clipboard(2, true, QStringLiteral("text")));
}

TEST_F(CoreCommandsTest, mediaGoesToTheWindowOfTheAppThatPlays)
{
    fakes.settings->setValue(QStringLiteral("QuillnestSingleApp"), false);
    const auto moon = addApp(QStringLiteral("Moon"));
    auto &session = open(moon);
    loopback.connect(session);
    loopback.sent(session);
    run(QStringLiteral("media"));
    registry->setNowPlaying(AndroidMedia{QStringLiteral("Song"), QString(), true}, QUuid::createUuid());
    run(QStringLiteral("media"));
    EXPECT_EQ(loopback.sent(session), QByteArray());
    registry->setNowPlaying(AndroidMedia{QStringLiteral("Song"), QString(), true}, moon.id);
    run(QStringLiteral("media"));
    EXPECT_EQ(loopback.sent(session), bytes::key(85));
}

TEST_F(CoreCommandsTest, hideAndCloseAllActOnTheWindows)
{
    auto &session = open(addApp(QStringLiteral("Moon")));
    run(QStringLiteral("hide"));
    EXPECT_FALSE(session.panel().isVisible());
    EXPECT_FALSE(session.isClosing());
    run(QStringLiteral("close-all"));
    EXPECT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
    EXPECT_TRUE(hasLogged(QStringLiteral("close package=org.example.moon reason=close all")));
}

TEST_F(CoreCommandsTest, homeShowsTheLauncher)
{
    registry->homePanel().makeContent = [] { return new QWidget; };
    dispatcher.run(QStringLiteral("home"));
    EXPECT_EQ(registry->menuBarPopupFrame(), QRect(1600 - 390 - 12, 36, 390, 760));
}
