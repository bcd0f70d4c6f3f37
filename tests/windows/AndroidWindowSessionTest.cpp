#include "windows/AndroidWindowSession.h"

#include "windows/ControlBytes.h"
#include "windows/WindowFixture.h"

#include <QMenu>
#include <QTimer>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

class AndroidWindowSessionTest : public WindowFixture
{
protected:
    static QVariantMap saved(bool pinned, std::optional<int> x, std::optional<int> y)
    {
        QVariantMap values{{QStringLiteral("pinned"), pinned}};
        if (x)
            values.insert(QStringLiteral("x"), *x);
        if (y)
            values.insert(QStringLiteral("y"), *y);
        return values;
    }

    /// The menu of the size button, while it is open.
    void withSizeMenu(AndroidWindowSession &session, const std::function<void(QMenu &)> &look)
    {
        QTimer poll;
        bool seen = false;
        QObject::connect(&poll, &QTimer::timeout, [&] {
            if (auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) {
                poll.stop();
                seen = true;
                look(*menu);
                menu->close();
            }
        });
        poll.start(0);
        QTest::mouseClick(headerButton(session, QStringLiteral("Window size")), Qt::LeftButton);
        EXPECT_TRUE(seen);
    }

    qsizetype looks() const { return fakes.processes->count(QStringLiteral("grep ResumedActivity")); }
    void setResumed(const QByteArray &answer) { fakes.processes->on(QStringLiteral("grep ResumedActivity"), answer); }
};

const QByteArray stillThere = "  topResumedActivity=ActivityRecord{1f u0 org.example.app/.Main t7}\n";

} // namespace

// Where the window opens.

TEST_F(AndroidWindowSessionTest, anUnpinnedWindowOpensAtTheTopRightAndForgetsWhereItWas)
{
    setRecord(saved(false, 100, 100));
    EXPECT_EQ(open().panel().geometry(), QRect(1600 - 390 - 12, 36, 390, 760));
}

TEST_F(AndroidWindowSessionTest, aPinnedWindowOpensWhereItWas)
{
    registry->pendingAnchor = QRect(300, 300, 10, 10);
    setRecord(saved(true, 100, 150));
    auto &session = open();
    EXPECT_EQ(session.panel().geometry().topLeft(), QPoint(100, 150));
    EXPECT_TRUE(session.counters().isPinned);
    EXPECT_TRUE(session.panel().isFloating());
}

TEST_F(AndroidWindowSessionTest, aPinnedWindowWhoseScreenIsGoneOpensAtTheAnchorOrAtTheTopRight)
{
    setRecord(saved(true, 2000, 150));
    registry->pendingAnchor = QRect(300, 320, 10, 10);
    auto &session = open();
    EXPECT_EQ(session.panel().geometry().topLeft(), QPoint(300, 320));
    session.close(QStringLiteral("test"));
    ASSERT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
    setRecord(saved(true, 2000, 150));
    EXPECT_EQ(open().panel().geometry().topLeft(), QPoint(1600 - 390 - 12, 36));
}

TEST_F(AndroidWindowSessionTest, aSavedSpotCountsOnlyWhenALittleInsideOfItIsVisible)
{
    const auto originFor = [this](int x, int y) {
        setRecord(saved(true, x, y));
        auto &session = open();
        const auto origin = session.panel().geometry().topLeft();
        session.close(QStringLiteral("test"));
        EXPECT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
        return origin;
    };
    const QPoint topRight(1600 - 390 - 12, 36);
    EXPECT_EQ(originFor(100, 10), QPoint(100, 10));
    EXPECT_EQ(originFor(100, 9), topRight);
    EXPECT_EQ(originFor(-20, 100), QPoint(-20, 100));
    EXPECT_EQ(originFor(-21, 100), topRight);
    EXPECT_EQ(originFor(1579, 100), QPoint(1579, 100));
    EXPECT_EQ(originFor(1580, 100), topRight);
}

TEST_F(AndroidWindowSessionTest, aPinnedWindowWithHalfAnOriginHasNone)
{
    setRecord(saved(true, 100, std::nullopt));
    EXPECT_EQ(open().panel().geometry().topLeft(), QPoint(1600 - 390 - 12, 36));
}

TEST_F(AndroidWindowSessionTest, theAnchorIsUsedOnce)
{
    registry->pendingAnchor = QRect(300, 320, 10, 10);
    EXPECT_EQ(open().panel().geometry().topLeft(), QPoint(300, 320));
    EXPECT_FALSE(registry->pendingAnchor);
}

TEST_F(AndroidWindowSessionTest, withoutAScreenItOpensAtNothingWithTwoPixelsToThePoint)
{
    fakes.screens->screens.clear();
    auto &session = open();
    EXPECT_EQ(session.panel().geometry().topLeft(), QPoint(0, 0));
    ASSERT_TRUE(waitFor([this] { return device.servers() == 1; }));
    EXPECT_EQ(fakes.processes->count(QStringLiteral("new_display=776x1448/320 ")), 1);
}

TEST_F(AndroidWindowSessionTest, theStreamIsAskedForThePixelsOfTheVideoArea)
{
    fakes.screens->screens[0].backingScaleFactor = 1.5;
    open();
    ASSERT_TRUE(waitFor([this] { return device.servers() == 1; }));
    EXPECT_EQ(fakes.processes->count(QStringLiteral("video_bit_rate=8000000 max_fps=60 new_display=584x1080/240 ")), 1);
    EXPECT_EQ(
        fakes.processes->count(
            QStringLiteral("-s emulator-5556 push ") + fakes.path(QStringLiteral("dev/share/scrcpy/scrcpy-server"))),
        1);
}

TEST_F(AndroidWindowSessionTest, theServerGetsTheSizeCutToEightPixels)
{
    fakes.screens->screens[0].backingScaleFactor = 2;
    open();
    ASSERT_TRUE(waitFor([this] { return device.servers() == 1; }));
    EXPECT_EQ(fakes.processes->count(QStringLiteral("new_display=776x1448/320")), 1);
}

TEST_F(AndroidWindowSessionTest, theWindowHasItsTitleItsLeastSizeAndItsParts)
{
    auto &session = openKey();
    EXPECT_EQ(session.panel().windowTitle(), QStringLiteral("Quillnest · Example"));
    EXPECT_EQ(session.panel().minimumSize(), QSize(280, 420));
    EXPECT_EQ(videoView(session).pos(), QPoint(0, 36));
    EXPECT_TRUE(isAbout(session.panel(), videoView(session).size(), {390, 724}));
    EXPECT_TRUE(videoView(session).hasFocus());
}

TEST_F(AndroidWindowSessionTest, theSessionLogBeginsAnewWithEveryWindow)
{
    fakes.writeFile(QStringLiteral("Logs/Quillnest/native-org.example.app.log"), "an old line\n");
    open();
    const auto content = fakes.readFile(QStringLiteral("Logs/Quillnest/native-org.example.app.log"));
    ASSERT_TRUE(content);
    EXPECT_FALSE(content->contains("an old line"));
}

// The saved record.

TEST_F(AndroidWindowSessionTest, theRecordHoldsTheFrameAndThePin)
{
    auto &session = openKey();
    session.panel().move(120, 130);
    ASSERT_TRUE(waitFor([this] { return record().value(QStringLiteral("x")) == 120; }));
    session.panel().resize(400, 700);
    ASSERT_TRUE(waitFor([this] { return record().value(QStringLiteral("w")) == 400; }));
    EXPECT_EQ(
        record(),
        (QVariantMap{
            {QStringLiteral("x"), 120},
            {QStringLiteral("y"), 130},
            {QStringLiteral("w"), 400},
            {QStringLiteral("h"), 700},
            {QStringLiteral("pinned"), false}}));
    QTest::mouseClick(headerButton(session, QStringLiteral("Pin on top (keeps the window open)")), Qt::LeftButton);
    EXPECT_EQ(record().value(QStringLiteral("pinned")), true);
    EXPECT_TRUE(session.panel().isFloating());
    QTest::mouseClick(headerButton(session, QStringLiteral("Pin on top (keeps the window open)")), Qt::LeftButton);
    EXPECT_EQ(record().value(QStringLiteral("pinned")), false);
    EXPECT_FALSE(session.panel().isFloating());
}

TEST_F(AndroidWindowSessionTest, hidingAndClosingSaveTheFrame)
{
    auto &session = openKey();
    const int width = session.panel().width();
    fakes.settings->remove(QStringLiteral("Quillnest.window.") + package);
    session.hide();
    EXPECT_EQ(record().value(QStringLiteral("w")), width);
    fakes.settings->remove(QStringLiteral("Quillnest.window.") + package);
    session.close(QStringLiteral("test"));
    EXPECT_EQ(record().value(QStringLiteral("w")), width);
}

// Hiding and closing.

TEST_F(AndroidWindowSessionTest, aHiddenWindowsStreamGoesOn)
{
    auto &session = openKey();
    device.connect(session);
    QTest::mouseClick(headerButton(session, QStringLiteral("Hide")), Qt::LeftButton);
    EXPECT_FALSE(session.panel().isVisible());
    device.announce(session, {392, 720});
    EXPECT_FALSE(session.isClosing());
    EXPECT_EQ(forceStops(), 0);
    EXPECT_TRUE(ends.empty());
}

TEST_F(AndroidWindowSessionTest, aWindowThatLosesTheKeyboardHides)
{
    auto &session = openKey();
    takeKeyboard();
    EXPECT_TRUE(waitFor([&session] { return !session.panel().isVisible(); }));
    EXPECT_FALSE(session.isClosing());
}

TEST_F(AndroidWindowSessionTest, aPinnedWindowStaysWhenItLosesTheKeyboard)
{
    setRecord(saved(true, 100, 100));
    auto &session = openKey();
    takeKeyboard();
    EXPECT_FALSE(session.panel().isActiveWindow());
    EXPECT_TRUE(session.panel().isVisible());
}

TEST_F(AndroidWindowSessionTest, withoutAutoHideAWindowStaysWhenItLosesTheKeyboard)
{
    fakes.settings->setValue(QStringLiteral("QuillnestAutoHide"), false);
    auto &session = openKey();
    takeKeyboard();
    EXPECT_FALSE(session.panel().isActiveWindow());
    EXPECT_TRUE(session.panel().isVisible());
}

TEST_F(AndroidWindowSessionTest, autoHideThatIsNoBooleanCountsAsOn)
{
    fakes.settings->setValue(QStringLiteral("QuillnestAutoHide"), QStringLiteral("false"));
    auto &session = openKey();
    takeKeyboard();
    EXPECT_TRUE(waitFor([&session] { return !session.panel().isVisible(); }));
}

TEST_F(AndroidWindowSessionTest, closeStopsTheAppAndTellsTheOpener)
{
    auto &session = openKey();
    registry->setUnread(appID, true);
    device.connect(session);
    session.close(QStringLiteral("a reason"));
    EXPECT_FALSE(session.panel().isVisible());
    EXPECT_TRUE(registry->unreadAppIDs().isEmpty());
    EXPECT_TRUE(waitFor([this] { return ends.size() == 1; }));
    EXPECT_EQ(ends[0], std::nullopt);
    EXPECT_EQ(forceStops(), 1);
    EXPECT_TRUE(registry->sessions().empty());
    EXPECT_TRUE(hasLogged(QStringLiteral("close package=org.example.app reason=a reason")));
    EXPECT_TRUE(hasLogged(QStringLiteral("native window ended package=org.example.app error=none")));
}

TEST_F(AndroidWindowSessionTest, aSecondCloseOnlyLogs)
{
    auto &session = openKey();
    session.close(QStringLiteral("first"));
    session.close(QStringLiteral("second"));
    EXPECT_TRUE(waitFor([this] { return ends.size() == 1; }));
    EXPECT_EQ(forceStops(), 1);
    EXPECT_EQ(logLines().filter(QStringLiteral("close package=org.example.app")).size(), 2);
}

TEST_F(AndroidWindowSessionTest, theCloseButtonAndTheCloseCommandCloseTheApp)
{
    auto &session = openKey();
    QTest::mouseClick(headerButton(session, QStringLiteral("Close app")), Qt::LeftButton);
    EXPECT_TRUE(session.isClosing());
    EXPECT_TRUE(hasLogged(QStringLiteral("close package=org.example.app reason=close button")));
    ASSERT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
    auto &second = openKey();
    QTest::keyClick(&videoView(second), Qt::Key_W, Qt::ControlModifier);
    EXPECT_TRUE(second.isClosing());
    EXPECT_TRUE(hasLogged(QStringLiteral("close package=org.example.app reason=window close (Cmd+W)")));
}

TEST_F(AndroidWindowSessionTest, anEndThatNobodyAskedForCarriesItsError)
{
    fakes.processes->on(QStringLiteral(" push "), ScriptedProcesses::Answer{"no room", 1});
    auto &session = open();
    session.panel();
    ASSERT_TRUE(waitFor([this] { return ends.size() == 1; }));
    ASSERT_TRUE(ends[0]);
    EXPECT_TRUE(ends[0]->contains(QStringLiteral("no room"))) << ends[0]->toStdString();
    EXPECT_TRUE(registry->sessions().empty());
    EXPECT_EQ(forceStops(), 0);
}

TEST_F(AndroidWindowSessionTest, anErrorAfterCloseIsNotTold)
{
    fakes.processes->on(QStringLiteral(" push "), ScriptedProcesses::Answer{"no room", 1});
    open().close(QStringLiteral("test"));
    ASSERT_TRUE(waitFor([this] { return ends.size() == 1; }));
    EXPECT_EQ(ends[0], std::nullopt);
}

TEST_F(AndroidWindowSessionTest, theFirstPictureIsLoggedAndTurnsTheVolumeUpAMomentLater)
{
    auto &session = openKey();
    device.connect(session);
    device.sendPicture();
    EXPECT_TRUE(waitFor([this] { return hasLogged(QStringLiteral("native first frame package=org.example.app")); }));
    const auto volumes = [this] { return fakes.processes->count(QStringLiteral("media_session volume")); };
    pass(1490ms);
    EXPECT_EQ(volumes(), 0);
    pass(10ms);
    EXPECT_GT(volumes(), 0);
}

TEST_F(AndroidWindowSessionTest, openingAWindowClearsItsUnreadMark)
{
    registry->setUnread(appID, true);
    open();
    EXPECT_TRUE(registry->unreadAppIDs().isEmpty());
}

// Home and back.

TEST_F(AndroidWindowSessionTest, homePutsTheLauncherInTheWindowsPlace)
{
    registry->homePanel().makeContent = [] { return new QWidget; };
    auto &session = openKey();
    session.panel().move(200, 210);
    ASSERT_TRUE(waitFor([&session] { return session.panel().geometry().topLeft() == QPoint(200, 210); }));
    QTest::mouseClick(headerButton(session, QStringLiteral("Quillnest apps")), Qt::LeftButton);
    EXPECT_FALSE(session.panel().isVisible());
    EXPECT_FALSE(session.isClosing());
    EXPECT_EQ(registry->menuBarPopupFrame()->topLeft(), QPoint(200, 210));
    EXPECT_TRUE(isAbout(session.panel(), registry->menuBarPopupFrame()->size(), {390, 760}));
    EXPECT_TRUE(hasLogged(QStringLiteral("home page shown")));
}

TEST_F(AndroidWindowSessionTest, everyWayOfGoingBackSendsBack)
{
    setResumed(stillThere);
    auto &session = openKey();
    device.connect(session);
    device.announce(session, {392, 720});
    device.sent(session);
    QTest::mouseClick(headerButton(session, QStringLiteral("Android Back (Esc / right-click)")), Qt::LeftButton);
    EXPECT_EQ(device.sent(session), bytes::back());
    QTest::keyClick(&videoView(session), Qt::Key_Escape);
    EXPECT_EQ(device.sent(session), bytes::back());
    QTest::mouseClick(&videoView(session), Qt::RightButton);
    EXPECT_EQ(device.sent(session), bytes::back());
    // Each of them is watched.
    pass(2s);
    EXPECT_EQ(looks(), 4);
}

TEST_F(AndroidWindowSessionTest, afterBackFourLooksLeaveAnAppAloneThatIsStillThere)
{
    setResumed(stillThere);
    auto &session = open();
    session.handleBack();
    const std::vector<std::pair<int, int>> table{{190, 0}, {200, 1},  {440, 1},  {450, 2}, {790, 2},
                                                 {800, 3}, {1290, 3}, {1300, 4}, {5000, 4}};
    int now = 0;
    for (const auto &[at, expected] : table) {
        pass(std::chrono::milliseconds(at - now));
        now = at;
        EXPECT_EQ(looks(), expected) << at;
    }
    EXPECT_FALSE(session.isClosing());
}

TEST_F(AndroidWindowSessionTest, aBackThatLeavesTheAppClosesItsWindowAndShowsTheLauncherThere)
{
    registry->homePanel().makeContent = [] { return new QWidget; };
    setResumed("  topResumedActivity=ActivityRecord{1f u0 org.example.launcher/.Main t7}\n");
    auto &session = openKey();
    const auto origin = session.panel().geometry().topLeft();
    session.handleBack();
    pass(200ms);
    ASSERT_TRUE(waitFor([this] { return ends.size() == 1; }));
    EXPECT_EQ(registry->menuBarPopupFrame()->topLeft(), origin);
    EXPECT_TRUE(isAbout(*registry->homePanel().panel(), registry->menuBarPopupFrame()->size(), {390, 760}));
    EXPECT_TRUE(hasLogged(QStringLiteral("back left org.example.app: closing window, showing Quillnest home")));
    EXPECT_TRUE(hasLogged(QStringLiteral("close package=org.example.app reason=back on first screen")));
    pass(5s);
    EXPECT_EQ(looks(), 1);
    EXPECT_EQ(forceStops(), 1);
}

TEST_F(AndroidWindowSessionTest, aDeviceThatIsGoneCountsAsAnAppThatHasLeft)
{
    fakes.processes->on(QStringLiteral("grep ResumedActivity"), ScriptedProcesses::Answer{"", 1});
    auto &session = open();
    session.handleBack();
    pass(200ms);
    EXPECT_TRUE(waitFor([this] { return ends.size() == 1; }));
}

TEST_F(AndroidWindowSessionTest, ofTwoBacksInARowOnlyTheSecondIsLookedAfter)
{
    setResumed(stillThere);
    auto &session = open();
    session.handleBack();
    pass(150ms);
    session.handleBack();
    pass(190ms);
    EXPECT_EQ(looks(), 0);
    pass(5s);
    EXPECT_EQ(looks(), 4);
    EXPECT_FALSE(session.isClosing());
}

TEST_F(AndroidWindowSessionTest, aStaleAnswerDoesNotCloseTheWindow)
{
    auto &session = openKey();
    setResumed("");
    session.handleBack();
    fakes.clock->advance(200ms);
    // The look has its answer, and before it is acted on the user goes back again.
    while (looks() == 0 && fakes.executor->runOneInBackground()) { }
    ASSERT_EQ(looks(), 1);
    setResumed(stillThere);
    session.handleBack();
    pass(5s);
    EXPECT_FALSE(session.isClosing());
    EXPECT_EQ(looks(), 5);
}

TEST_F(AndroidWindowSessionTest, aWindowThatClosesIsNotLookedAfter)
{
    setResumed("");
    auto &session = open();
    session.handleBack();
    session.close(QStringLiteral("test"));
    pass(5s);
    EXPECT_EQ(looks(), 0);
}

// The clipboard.

TEST_F(AndroidWindowSessionTest, theClipboardGoesOverWhenItHasChangedSinceTheWindowLastHadTheKeyboard)
{
    fakes.settings->setValue(QStringLiteral("QuillnestAutoHide"), false);
    auto &session = openKey();
    device.connect(session);
    EXPECT_EQ(device.sent(session), QByteArray());
    const auto comeBack = [&] {
        takeKeyboard();
        session.show();
        EXPECT_TRUE(giveKeyboard(fakes, session.panel()));
        return device.sent(session);
    };
    fakes.pasteboard->put(QStringLiteral("copied"));
    EXPECT_EQ(comeBack(), bytes::clipboard(2, false, QStringLiteral("copied")));
    EXPECT_EQ(comeBack(), QByteArray());
    // The same text copied again is another change.
    fakes.pasteboard->put(QStringLiteral("copied"));
    EXPECT_EQ(comeBack(), bytes::clipboard(3, false, QStringLiteral("copied")));
    // Something that is no text.
    const std::optional<QString> picture;
    fakes.pasteboard->put(picture);
    EXPECT_EQ(comeBack(), QByteArray());
    fakes.pasteboard->put(QString());
    EXPECT_EQ(comeBack(), QByteArray());
    // A password goes over by the user's own paste alone.
    fakes.pasteboard->put(QStringLiteral("secret"), true);
    EXPECT_EQ(comeBack(), QByteArray());
    session.paste();
    EXPECT_TRUE(device.sent(session).contains("secret"));
}

TEST_F(AndroidWindowSessionTest, theFirstTimeTheClipboardGoesOverAsSoonAsTheDeviceIsThere)
{
    fakes.settings->setValue(QStringLiteral("QuillnestAutoHide"), false);
    fakes.pasteboard->put(QStringLiteral("from before"));
    auto &session = openKey();
    device.connect(session);
    // The window hears of the connection a moment later.
    QByteArray sent;
    EXPECT_TRUE(waitFor([&] {
        sent += device.sent(session);
        return sent.endsWith(bytes::clipboard(2, false, QStringLiteral("from before")));
    }));
    // Its number is taken once.
    session.paste();
    EXPECT_EQ(device.sent(session), bytes::clipboard(3, true, QStringLiteral("from before")));
}

// Sizes.

TEST_F(AndroidWindowSessionTest, manyResizesInARowSendOneMessageWhenTheyHaveStopped)
{
    auto &session = openKey();
    device.connect(session);
    device.sent(session);
    for (const auto size : {QSize(400, 700), QSize(410, 720), QSize(430, 750)}) {
        ASSERT_TRUE(resize(session, size));
        pass(200ms);
    }
    EXPECT_EQ(device.sent(session), QByteArray());
    pass(50ms);
    const auto display = displayFor(session);
    EXPECT_EQ(device.sent(session), bytes::resize(display.width(), display.height()));
    pass(5s);
    EXPECT_EQ(device.sent(session), QByteArray());
    const auto content = fakes.readFile(QStringLiteral("Logs/Quillnest/native-org.example.app.log"));
    const auto line = QStringLiteral("Quillnest: resize display %1x%2\n").arg(display.width()).arg(display.height());
    EXPECT_TRUE(content && content->contains(line.toUtf8()));
    EXPECT_TRUE(isAbout(session.panel(), QuillnestLayout::size(*fakes.settings).toSize(), {430, 750}));
}

TEST_F(AndroidWindowSessionTest, openingAWindowSendsNoSize)
{
    auto &session = openKey();
    device.connect(session);
    pass(5s);
    EXPECT_EQ(device.sent(session), QByteArray());
    EXPECT_EQ(fakes.settings->value(QStringLiteral("Quillnest.panelWidth")), QVariant());
}

TEST_F(AndroidWindowSessionTest, theSizeMenuNamesTheSizesAndTicksThePresentOne)
{
    fakes.settings->setValue(QStringLiteral("Quillnest.panelWidth"), 380);
    fakes.settings->setValue(QStringLiteral("Quillnest.panelHeight"), 756);
    auto &session = openKey();
    withSizeMenu(session, [](QMenu &menu) {
        const auto items = menu.actions();
        ASSERT_EQ(items.size(), 13);
        EXPECT_EQ(items[0]->text(), QStringLiteral("380 × 720 | Android"));
        EXPECT_FALSE(items[0]->isEnabled());
        EXPECT_TRUE(items[1]->isSeparator());
        EXPECT_EQ(items[2]->text(), QStringLiteral("Widget — 320 × 420"));
        EXPECT_EQ(items[10]->text(), QStringLiteral("Tablet — 760 × 1000"));
        EXPECT_TRUE(items[11]->isSeparator());
        EXPECT_EQ(items[12]->text(), QStringLiteral("Custom: drag a window corner"));
        EXPECT_FALSE(items[12]->isEnabled());
        for (int i = 2; i < 11; ++i)
            EXPECT_EQ(items[i]->isChecked(), i == 5) << i;
    });
}

TEST_F(AndroidWindowSessionTest, aSizeOfTheMenuIsAppliedToTheWindow)
{
    auto &session = openKey();
    session.panel().move(100, 100);
    ASSERT_TRUE(waitFor([&session] { return session.panel().geometry().topLeft() == QPoint(100, 100); }));
    withSizeMenu(session, [](QMenu &menu) { menu.actions()[6]->trigger(); });
    EXPECT_TRUE(waitFor([&session] { return isAbout(session.panel(), videoView(session).size(), {390, 840}); }));
    EXPECT_EQ(session.panel().geometry().topLeft(), QPoint(100, 100));
    EXPECT_EQ(QuillnestLayout::size(*fakes.settings), QSizeF(390, 876));
    EXPECT_TRUE(hasLogged(QStringLiteral("window size preset Tall — 390 × 840")));
}

TEST_F(AndroidWindowSessionTest, aSizeThatTheScreenCutsIsNotTicked)
{
    fakes.screens->screens[0].visibleFrame = QRect(0, 30, 1600, 700);
    auto &session = openKey();
    withSizeMenu(session, [](QMenu &menu) { menu.actions()[6]->trigger(); });
    EXPECT_TRUE(waitFor([&session] { return session.panel().height() == 700; }));
    withSizeMenu(session, [](QMenu &menu) {
        for (const auto *item : menu.actions())
            EXPECT_FALSE(item->isChecked());
    });
}

TEST_F(AndroidWindowSessionTest, aWindowMayEndWhileItsSizeMenuIsOpen)
{
    auto &session = openKey();
    device.connect(session);
    withSizeMenu(session, [this](QMenu &) {
        device.hangUp();
        EXPECT_TRUE(waitFor([this] { return ends.size() == 1; }));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    });
    EXPECT_TRUE(registry->sessions().empty());
}

// What other rooms fill in.

TEST_F(AndroidWindowSessionTest, aLockedAppIsSeenUntilItsWindowIsHiddenOrClosed)
{
    auto &session = open();
    session.hide();
    EXPECT_TRUE(locks->seen.isEmpty()) << "an app without a lock";
    locks->locked = {appID};
    session.show();
    session.hide();
    EXPECT_EQ(locks->seen, QList<QUuid>{appID});
    session.close(QStringLiteral("test"));
    EXPECT_EQ(locks->seen.size(), 2);
}

TEST_F(AndroidWindowSessionTest, mediaKeysArePressedAndReleased)
{
    auto &session = open();
    device.connect(session);
    device.sent(session);
    session.sendMediaKey(MediaAction::previous);
    session.sendMediaKey(MediaAction::playPause);
    session.sendMediaKey(MediaAction::next);
    EXPECT_EQ(device.sent(session), bytes::key(88) + bytes::key(85) + bytes::key(87));
}

TEST_F(AndroidWindowSessionTest, aClosedWindowPlaysNothingAnyMore)
{
    auto &session = open();
    registry->setNowPlaying(AndroidMedia{QStringLiteral("Song"), QStringLiteral("Singer"), true}, appID);
    session.close(QStringLiteral("test"));
    EXPECT_FALSE(registry->nowPlaying());
}

TEST_F(AndroidWindowSessionTest, droppedFilesAreTakenIntoTheAppInTheBackground)
{
    auto &session = open();
    const QList<QUrl> files{
        QUrl::fromLocalFile(QStringLiteral("/a/one.txt")), QUrl::fromLocalFile(QStringLiteral("/a/two.txt"))};
    videoView(session).onFilesDropped(files);
    EXPECT_TRUE(transfer->pushed.isEmpty());
    fakes.settle();
    EXPECT_EQ(
        transfer->pushed,
        (QStringList{
            QStringLiteral("one.txt to org.example.app on -1"), QStringLiteral("two.txt to org.example.app on -1")}));
}

TEST_F(AndroidWindowSessionTest, aSavedOriginOfAnotherTypeIsNone)
{
    setRecord(
        {{QStringLiteral("x"), QStringLiteral("100")},
         {QStringLiteral("y"), QStringLiteral("100")},
         {QStringLiteral("pinned"), true}});
    EXPECT_EQ(open().panel().geometry().topLeft(), QPoint(1600 - 390 - 12, 36));
}

// What commands and features may ask.

TEST_F(AndroidWindowSessionTest, theHandleTellsWhoItIsAndWhetherItCanBeSeen)
{
    fakes.settings->setValue(QStringLiteral("QuillnestAutoHide"), false);
    auto &session = openKey();
    AppSession &handle = session;
    EXPECT_EQ(handle.appID(), appID);
    EXPECT_EQ(handle.package(), package);
    EXPECT_EQ(handle.title(), QStringLiteral("Example"));
    EXPECT_TRUE(handle.isVisible());
    EXPECT_EQ(handle.displayID(), std::nullopt);
    EXPECT_EQ(handle.counters().frame, session.panel().frame());
    EXPECT_TRUE(isAbout(session.panel(), handle.counters().videoArea.size(), {390, 724}));
    EXPECT_EQ(handle.counters().windowId, session.panel().winId());
    handle.hide();
    EXPECT_FALSE(handle.isVisible());
    handle.show();
    handle.close(QStringLiteral("test"));
    EXPECT_FALSE(handle.isVisible());
    EXPECT_TRUE(handle.isClosing());
}

TEST_F(AndroidWindowSessionTest, commandsTravelAsMessages)
{
    auto &session = open();
    device.connect(session);
    device.sent(session);
    session.copy();
    session.send("\x11");
    fakes.pasteboard->put(QStringLiteral("text"));
    session.paste();
    EXPECT_EQ(device.sent(session), QByteArray("\x08\x01\x11", 3) + bytes::clipboard(2, true, QStringLiteral("text")));
}

TEST_F(AndroidWindowSessionTest, aStillServesAllWhoAskedForIt)
{
    auto &session = open();
    device.connect(session);
    device.sent(session);
    std::vector<QSize> stills;
    const auto take = [&stills](const QImage &still) { stills.push_back(still.size()); };
    session.requestStill(take);
    session.requestStill([&](const QImage &still) {
        take(still);
        session.requestStill(take);
    });
    EXPECT_EQ(device.sent(session), QByteArray("\x11\x11")) << "a key frame is asked for";
    device.sendPicture();
    ASSERT_TRUE(waitFor([&stills] { return stills.size() == 2; }));
    device.sendPicture();
    ASSERT_TRUE(waitFor([&stills] { return stills.size() == 3; }));
    device.sendPicture();
    ASSERT_TRUE(waitFor([&session] { return session.counters().stream.framesEnqueued == 3; }));
    fakes.settle();
    EXPECT_EQ(stills, (std::vector<QSize>(3, QSize(4, 4))));
}

TEST_F(AndroidWindowSessionTest, samplesCanBeWatched)
{
    /// Counts.
    class Counter : public SampleConsumer
    {
    public:
        void takeVideo(const VideoSample &, std::chrono::microseconds) override { ++pictures; }
        void takeAudio(std::span<const std::uint8_t>, std::chrono::microseconds) override { }
        void ended() override { hasEnded = true; }
        int pictures = 0;
        bool hasEnded = false;
    };
    auto &session = open();
    device.connect(session);
    const auto counter = std::make_shared<Counter>();
    session.attach(counter);
    device.sendPicture();
    EXPECT_TRUE(waitFor([&] { return counter->pictures == 1; }));
    EXPECT_FALSE(counter->hasEnded);
    session.detach(counter);
    EXPECT_TRUE(waitFor([&] { return counter->hasEnded; }));
}

TEST_F(AndroidWindowSessionTest, aMessageIsShownOnlyWhereItCanBeSeen)
{
    fakes.settings->setValue(QStringLiteral("QuillnestAutoHide"), false);
    auto &session = openKey();
    QStringList shown;
    EXPECT_FALSE(session.showMessage({QStringLiteral("nobody"), QString()}));
    session.setMessageDisplay(
        [&shown](const WindowMessage &message) { shown.append(message.title + QLatin1Char('|') + message.text); });
    EXPECT_TRUE(session.showMessage({QStringLiteral("Saved"), QStringLiteral("in a folder")}));
    session.hide();
    EXPECT_FALSE(session.showMessage({QStringLiteral("unseen"), QString()}));
    session.show();
    session.close(QStringLiteral("test"));
    EXPECT_FALSE(session.showMessage({QStringLiteral("too late"), QString()}));
    EXPECT_EQ(shown, QStringList{QStringLiteral("Saved|in a folder")});
}
