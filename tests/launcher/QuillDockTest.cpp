#include "launcher/QuillDock.h"

#include "PanelFixture.h"
#include "launcher/StatusPill.h"
#include "look/Spinner.h"

using namespace quillnest;

namespace
{
class QuillDockTest : public LivePanelFixture
{
protected:
    bool spins() const
    {
        const auto *spinner = part<QuillDock>()->findChild<Spinner *>();
        return spinner->isVisible();
    }
    void openMoon()
    {
        deviceIsUp();
        deviceCleaned.finish();
        addApp(QStringLiteral("Star"));
        moon = addApp(QStringLiteral("Moon"));
        open(moon);
        ASSERT_TRUE(waitFor([this] { return !store->launchingAppID(); }));
    }
    MobileApp moon;
};
} // namespace

TEST_F(QuillDockTest, withoutAnAppItTellsWhatAndroidIsDoing)
{
    EXPECT_TRUE(shows(QStringLiteral("Android is sleeping")));
    EXPECT_TRUE(shows(QStringLiteral("Opening an app wakes it in about 10 seconds.")));
    EXPECT_FALSE(spins());
    EXPECT_FALSE(part<StatusPill>()->isVisible()) << "it would say the same";
    device.listed = true;
    device.booted = true;
    store->refreshAndroidState();
    fakes.settle();
    EXPECT_TRUE(shows(QStringLiteral("Android is ready")));
    EXPECT_TRUE(shows(QStringLiteral("Apps open instantly.")));
    QFile::remove(paths.systemImage());
    store->refreshAndroidState();
    EXPECT_TRUE(shows(QStringLiteral("Android is not set up")));
    EXPECT_TRUE(shows(QStringLiteral("Set it up above to start using apps.")));
}

TEST_F(QuillDockTest, whileAndroidStartsASpinnerTurns)
{
    store->launch(addApp(QStringLiteral("Moon")));
    EXPECT_TRUE(shows(QStringLiteral("Starting Android")));
    EXPECT_TRUE(shows(QStringLiteral("Your app opens in a few seconds.")));
    EXPECT_TRUE(spins());
}

TEST_F(QuillDockTest, aStartThatNobodyAskedForPromisesNoApp)
{
    fakes.settings->setValue(QStringLiteral("QuillnestPrewarm"), true);
    store->prewarmAndroid();
    fakes.runUntil([this] { return store->androidState() == State::starting; });
    EXPECT_TRUE(shows(QStringLiteral("Starting Android")));
    EXPECT_TRUE(shows(QStringLiteral("It is ready in a few seconds.")));
    EXPECT_FALSE(shows(QStringLiteral("Your app opens in a few seconds.")));
}

TEST_F(QuillDockTest, theOpenAppComesForwardAndCloses)
{
    openMoon();
    EXPECT_TRUE(shows(QStringLiteral("Moon")));
    EXPECT_TRUE(part<StatusPill>()->isVisible());
    EXPECT_EQ(button(QStringLiteral("Play or pause")), nullptr);
    registry->session(moon.id)->hide();
    button(QStringLiteral("Show Moon"))->click();
    EXPECT_TRUE(registry->session(moon.id)->isVisible());
    button(QStringLiteral("Close"))->click();
    EXPECT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
    EXPECT_EQ(button(QStringLiteral("Show Moon")), nullptr);
    EXPECT_FALSE(shows(QStringLiteral("Moon")));
}

TEST_F(QuillDockTest, theButtonsOfThePlayerAreThereForTheAppThatPlays)
{
    openMoon();
    auto *symbols = static_cast<FakeSymbols *>(fakes.platform.symbols.get());
    const auto asksFor = [&](const char *name) {
        symbols->asked.clear();
        part<QuillDock>()->grab();
        return symbols->asked.contains(QLatin1String(name));
    };
    registry->setNowPlaying(AndroidMedia{QStringLiteral("Song"), {}, true}, moon.id);
    ASSERT_NE(button(QStringLiteral("Play or pause")), nullptr);
    ASSERT_NE(button(QStringLiteral("Next")), nullptr);
    EXPECT_TRUE(asksFor("pause.fill"));
    registry->setNowPlaying(AndroidMedia{QStringLiteral("Song"), {}, false}, moon.id);
    EXPECT_TRUE(asksFor("play.fill"));
    registry->setNowPlaying(AndroidMedia{QStringLiteral("Song"), {}, true}, store->apps()[0].id);
    EXPECT_EQ(button(QStringLiteral("Play or pause")), nullptr) << "another one's song";
    registry->closeAll();
    EXPECT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
}

TEST(StatusPill, saysTheStateInAWordWithAColourAndASentence)
{
    using State = StatusPill::State;
    const auto expect = [](State state, const char *word, const char *help) {
        EXPECT_EQ(StatusPill::word(state), QLatin1String(word));
        EXPECT_EQ(StatusPill::help(state), QLatin1String(help));
        const PanelLook look;
        StatusPill pill(look);
        pill.setState(state);
        EXPECT_EQ(pill.toolTip(), QLatin1String(help));
        pill.resize(pill.sizeHint());
        const auto image = inPoints(pill.grab());
        EXPECT_EQ(image.pixel(11, 10), StatusPill::color(state).rgb());
    };
    expect(State::ready, "Ready", "Android is running. Apps open instantly.");
    expect(State::starting, "Starting", "Android is starting.");
    expect(State::sleeping, "Sleeping", "Android is off to save memory. It starts when you open an app.");
    expect(State::notSetUp, "Set up", "Android has not been set up yet.");
    EXPECT_EQ(StatusPill::color(State::ready), QuillnestTheme::jade());
    EXPECT_EQ(StatusPill::color(State::notSetUp), QuillnestTheme::ember());
}
