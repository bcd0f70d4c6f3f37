#include "windows/VideoInput.h"

#include "fakes/FakePlatform.h"
#include "windows/ControlBytes.h"

#include <QAction>
#include <QApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QTest>
#include <QWheelEvent>
#include <QWidget>

#include <gtest/gtest.h>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

/// Keeps what is sent, and says what size the video has.
class RecordingSender : public ControlSender
{
public:
    using ControlSender::send;
    void send(const QByteArray &message, std::optional<std::chrono::nanoseconds> since) override
    {
        bytes += message;
        moments.push_back(since);
    }
    std::uint64_t nextClipboardSequence() override { return ++sequence; }
    QSizeF videoSize() const override { return size; }

    QByteArray bytes;
    std::vector<std::optional<std::chrono::nanoseconds>> moments;
    std::uint64_t sequence = 1;
    QSizeF size;
};

/// Any widget of 400 by 800 points, whose input goes to a sender of the test's.
class VideoInputTest : public ::testing::Test
{
protected:
    VideoInputTest()
    {
        view->resize(400, 800);
        input->setSender(sender);
    }

    QByteArray sent() { return std::exchange(sender->bytes, {}); }
    void announce(double width, double height) { sender->size = {width, height}; }

    void press(int key, Qt::KeyboardModifiers modifiers = {}, const QString &text = {})
    {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
        QApplication::sendEvent(view.get(), &event);
        QKeyEvent release(QEvent::KeyRelease, key, modifiers, text);
        QApplication::sendEvent(view.get(), &release);
    }

    void wheel(QPoint pixels, QPoint angle)
    {
        QWheelEvent event(
            QPointF(200, 400), QPointF(200, 400), pixels, angle, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
            false);
        QApplication::sendEvent(view.get(), &event);
    }

    /// Whether a key is kept from the program's shortcuts.
    bool isKept(int key, Qt::KeyboardModifiers modifiers = {}, const QString &text = {})
    {
        QKeyEvent event(QEvent::ShortcutOverride, key, modifiers, text);
        event.ignore();
        QApplication::sendEvent(view.get(), &event);
        return event.isAccepted();
    }

    FakePlatform fakes = fakePlatform();
    std::unique_ptr<QWidget> view = std::make_unique<QWidget>();
    VideoInput *input = new VideoInput(fakes.platform, view.get());
    std::shared_ptr<RecordingSender> sender = std::make_shared<RecordingSender>();
};

} // namespace

TEST_F(VideoInputTest, beforeTheSizeIsKnownTheMouseSendsNothingAndKeysGoOut)
{
    QTest::mouseClick(view.get(), Qt::LeftButton, {}, QPoint(200, 400));
    wheel({}, {0, 120});
    EXPECT_EQ(sent(), QByteArray());
    press(Qt::Key_Return);
    EXPECT_EQ(sent(), bytes::key(66));
}

TEST_F(VideoInputTest, aSizeOfNothingInOneDirectionCountsAsUnknown)
{
    announce(0, 800);
    QTest::mouseClick(view.get(), Qt::LeftButton, {}, QPoint(200, 400));
    EXPECT_EQ(sent(), QByteArray());
}

TEST_F(VideoInputTest, aClickIsATouchDownAndUp)
{
    announce(800, 800);
    QTest::mouseClick(view.get(), Qt::LeftButton, {}, QPoint(200, 400));
    EXPECT_EQ(sent(), bytes::touch(bytes::down, 400, 400, 800, 800) + bytes::touch(bytes::up, 400, 400, 800, 800));
}

TEST_F(VideoInputTest, aClickInTheBarsLandsOnThePicturesEdge)
{
    announce(800, 800);
    QTest::mousePress(view.get(), Qt::LeftButton, {}, QPoint(200, 50));
    EXPECT_EQ(sent(), bytes::touch(bytes::down, 400, 0, 800, 800));
}

TEST_F(VideoInputTest, aDragMovesAndTheMouseWithoutAButtonSendsNothing)
{
    announce(400, 800);
    const auto moveTo = [this](QPointF to, Qt::MouseButtons buttons) {
        QMouseEvent event(QEvent::MouseMove, to, to, Qt::NoButton, buttons, Qt::NoModifier);
        QApplication::sendEvent(view.get(), &event);
    };
    moveTo({10, 10}, Qt::NoButton);
    EXPECT_EQ(sent(), QByteArray());
    QTest::mousePress(view.get(), Qt::LeftButton, {}, QPoint(10, 20));
    moveTo({15, 25}, Qt::LeftButton);
    // Beyond the window's edge: a drag goes on there.
    moveTo({450, -25}, Qt::LeftButton);
    QTest::mouseRelease(view.get(), Qt::LeftButton, {}, QPoint(30, 40));
    EXPECT_EQ(
        sent(),
        bytes::touch(bytes::down, 10, 20, 400, 800) + bytes::touch(bytes::move, 15, 25, 400, 800)
            + bytes::touch(bytes::move, 399, 0, 400, 800) + bytes::touch(bytes::up, 30, 40, 400, 800));
}

TEST_F(VideoInputTest, aDoubleClickIsTwoTouches)
{
    announce(400, 800);
    QTest::mouseClick(view.get(), Qt::LeftButton, {}, QPoint(10, 20));
    QMouseEvent second(
        QEvent::MouseButtonDblClick, QPointF(10, 20), QPointF(10, 20), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.get(), &second);
    QTest::mouseRelease(view.get(), Qt::LeftButton, {}, QPoint(10, 20));
    const auto tap = bytes::touch(bytes::down, 10, 20, 400, 800) + bytes::touch(bytes::up, 10, 20, 400, 800);
    EXPECT_EQ(sent(), tap + tap);
}

TEST_F(VideoInputTest, theRightButtonAsksForBackOrSendsIt)
{
    announce(400, 800);
    QTest::mouseClick(view.get(), Qt::RightButton, {}, QPoint(10, 20));
    EXPECT_EQ(sent(), bytes::back());
    int asked = 0;
    input->onBackRequest = [&asked] { ++asked; };
    QTest::mouseClick(view.get(), Qt::RightButton, {}, QPoint(10, 20));
    EXPECT_EQ(sent(), QByteArray());
    EXPECT_EQ(asked, 1);
}

TEST_F(VideoInputTest, otherButtonsSendNothing)
{
    announce(400, 800);
    QTest::mouseClick(view.get(), Qt::MiddleButton, {}, QPoint(10, 20));
    EXPECT_EQ(sent(), QByteArray());
}

TEST_F(VideoInputTest, aNotchOfAWheelIsASixteenthAndOnlyTheHorizontalAxisIsTurned)
{
    announce(800, 800);
    wheel({}, {0, 120});
    EXPECT_EQ(sent(), bytes::scroll(400, 400, 800, 800, 0, 2048));
    wheel({}, {0, -240});
    EXPECT_EQ(sent(), bytes::scroll(400, 400, 800, 800, 0, -4096));
    wheel({}, {120, 0});
    EXPECT_EQ(sent(), bytes::scroll(400, 400, 800, 800, -2048, 0));
}

TEST_F(VideoInputTest, aTrackpadsPixelsCountEightHundredths)
{
    announce(800, 800);
    // 25 pixels are two notches; the angle beside them is the same turn told again.
    wheel({0, 25}, {0, 1200});
    EXPECT_EQ(sent(), bytes::scroll(400, 400, 800, 800, 0, 4096));
    wheel({-50, 0}, {-1200, 0});
    EXPECT_EQ(sent(), bytes::scroll(400, 400, 800, 800, 8192, 0));
}

TEST_F(VideoInputTest, aWheelThatDoesNotTurnSendsNothing)
{
    announce(800, 800);
    wheel({}, {});
    EXPECT_EQ(sent(), QByteArray());
}

TEST_F(VideoInputTest, keysOfTheTableTravelAsKeyEvents)
{
    const std::vector<std::pair<int, std::uint32_t>> table{
        {Qt::Key_Return, 66}, {Qt::Key_Enter, 66},  {Qt::Key_Backspace, 67}, {Qt::Key_Delete, 112}, {Qt::Key_Tab, 61},
        {Qt::Key_Left, 21},   {Qt::Key_Right, 22},  {Qt::Key_Down, 20},      {Qt::Key_Up, 19},      {Qt::Key_Home, 122},
        {Qt::Key_End, 123},   {Qt::Key_PageUp, 92}, {Qt::Key_PageDown, 93},
    };
    for (const auto &[key, code] : table) {
        press(key, Qt::NoModifier, QStringLiteral("\r"));
        EXPECT_EQ(sent(), bytes::key(code)) << key;
        press(key, Qt::ShiftModifier);
        EXPECT_EQ(sent(), bytes::key(code, 1)) << key;
    }
    // What Shift makes of Tab.
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(sent(), bytes::key(61, 1));
}

TEST_F(VideoInputTest, tabStaysWithTheApp)
{
    view->setFocus();
    QTest::keyClick(view.get(), Qt::Key_Tab);
    EXPECT_EQ(sent(), bytes::key(61));
}

TEST_F(VideoInputTest, aRepeatedKeyIsPressedAndReleasedEachTime)
{
    for (int i = 0; i < 3; ++i) {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_Left, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(view.get(), &event);
    }
    EXPECT_EQ(sent(), bytes::key(21) + bytes::key(21) + bytes::key(21));
}

TEST_F(VideoInputTest, escapeAsksForBackOrSendsIt)
{
    press(Qt::Key_Escape, Qt::NoModifier, QStringLiteral("\x1b"));
    EXPECT_EQ(sent(), bytes::back());
    int asked = 0;
    input->onBackRequest = [&asked] { ++asked; };
    press(Qt::Key_Escape);
    EXPECT_EQ(sent(), QByteArray());
    EXPECT_EQ(asked, 1);
}

TEST_F(VideoInputTest, typedLettersTravelAsText)
{
    press(Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
    press(Qt::Key_A, Qt::ShiftModifier, QStringLiteral("A"));
    press(Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "));
    press(Qt::Key_unknown, Qt::NoModifier, QStringLiteral("€"));
    press(Qt::Key_unknown, Qt::NoModifier, QStringLiteral("😀"));
    EXPECT_EQ(
        sent(),
        bytes::text(QStringLiteral("a")) + bytes::text(QStringLiteral("A")) + bytes::text(QStringLiteral(" "))
            + bytes::text(QStringLiteral("€")) + bytes::text(QStringLiteral("😀")));
}

TEST_F(VideoInputTest, anAltCombinationThatYieldsACharacterIsTyped)
{
    press(Qt::Key_E, Qt::AltModifier, QStringLiteral("´"));
    EXPECT_EQ(sent(), bytes::text(QStringLiteral("´")));
}

TEST_F(VideoInputTest, controlAndFunctionCharactersAreNotTyped)
{
    press(Qt::Key_F5, Qt::NoModifier, QString(QChar(0xF708)));
    press(Qt::Key_F1, Qt::NoModifier, QString(QChar(0xF700)));
    press(Qt::Key_F12, Qt::NoModifier, QString(QChar(0xF8FF)));
    press(Qt::Key_unknown, Qt::NoModifier, QString(QChar(127)));
    press(Qt::Key_unknown, Qt::NoModifier, QString(QChar(31)));
    press(Qt::Key_unknown, Qt::NoModifier, QStringLiteral("a") + QChar(7));
    press(Qt::Key_Shift, Qt::ShiftModifier);
    EXPECT_EQ(sent(), QByteArray());
    // The neighbours of the forbidden ranges.
    press(Qt::Key_unknown, Qt::NoModifier, QString(QChar(0xF6FF)));
    press(Qt::Key_unknown, Qt::NoModifier, QString(QChar(0xF900)));
    press(Qt::Key_unknown, Qt::NoModifier, QStringLiteral("~"));
    EXPECT_EQ(
        sent(),
        bytes::text(QString(QChar(0xF6FF))) + bytes::text(QString(QChar(0xF900))) + bytes::text(QStringLiteral("~")));
}

TEST_F(VideoInputTest, composedCharactersAreTyped)
{
    QInputMethodEvent event;
    event.setCommitString(QStringLiteral("ê日"));
    QApplication::sendEvent(view.get(), &event);
    EXPECT_EQ(sent(), bytes::text(QStringLiteral("ê日")));
    // What is still being composed isn't.
    QInputMethodEvent preedit(QStringLiteral("´"), {});
    QApplication::sendEvent(view.get(), &preedit);
    EXPECT_EQ(sent(), QByteArray());
}

TEST_F(VideoInputTest, anInputMethodSendsEachCommitOnceHoweverItGotThere)
{
    const auto compose = [this](const QString &preedit, const QString &commit) {
        QInputMethodEvent event(preedit, {});
        event.setCommitString(commit);
        QApplication::sendEvent(view.get(), &event);
        EXPECT_TRUE(event.isAccepted());
    };
    compose(QStringLiteral("に"), {});
    compose(QStringLiteral("にほ"), {});
    compose(QStringLiteral("にほn"), {});
    EXPECT_EQ(sent(), QByteArray());
    // The beginning is taken while the rest is still composed.
    compose(QStringLiteral("ご"), QStringLiteral("日本"));
    compose({}, QStringLiteral("語"));
    EXPECT_EQ(sent(), bytes::text(QStringLiteral("日本")) + bytes::text(QStringLiteral("語")));
    // Given up.
    compose(QStringLiteral("x"), {});
    compose({}, {});
    EXPECT_EQ(sent(), QByteArray());

    EXPECT_TRUE(view->testAttribute(Qt::WA_InputMethodEnabled));
}

TEST_F(VideoInputTest, theOtherModifierKeepsALetterFromBeingTypedButNotAKeyOfTheTable)
{
    press(Qt::Key_C, Qt::MetaModifier, QStringLiteral("c"));
    EXPECT_EQ(sent(), QByteArray());
    press(Qt::Key_Left, Qt::MetaModifier);
    EXPECT_EQ(sent(), bytes::key(21));
}

TEST_F(VideoInputTest, copyAndCutAskForTheClipboardAndSelectAllIsAKeyWithControl)
{
    press(Qt::Key_C, Qt::ControlModifier, QStringLiteral("\x03"));
    EXPECT_EQ(sent(), QByteArray::fromHex("0801"));
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(sent(), QByteArray::fromHex("0802"));
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(sent(), bytes::key(29, 0x3000));
    // The key counts, whatever Shift makes of it.
    press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier, QStringLiteral("C"));
    EXPECT_EQ(sent(), QByteArray::fromHex("0801"));
}

TEST_F(VideoInputTest, pasteSendsTheClipboardWithARisingNumber)
{
    fakes.pasteboard->put(QStringLiteral("hällo"));
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(sent(), bytes::clipboard(2, true, QStringLiteral("hällo")));
    input->pasteFromMac();
    EXPECT_EQ(sent(), bytes::clipboard(3, true, QStringLiteral("hällo")));
}

TEST_F(VideoInputTest, pasteOfAnEmptyClipboardSendsNothingAndTakesNoNumber)
{
    press(Qt::Key_V, Qt::ControlModifier);
    fakes.pasteboard->put(QString());
    press(Qt::Key_V, Qt::ControlModifier);
    // Something that is no text.
    const std::optional<QString> picture;
    fakes.pasteboard->put(picture);
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(sent(), QByteArray());
    fakes.pasteboard->put(QStringLiteral("x"));
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(sent(), bytes::clipboard(2, true, QStringLiteral("x")));
}

TEST_F(VideoInputTest, aCommandThatIsNoneIsSwallowed)
{
    press(Qt::Key_Q, Qt::ControlModifier, QStringLiteral("q"));
    press(Qt::Key_Return, Qt::ControlModifier, QStringLiteral("\r"));
    press(Qt::Key_Escape, Qt::ControlModifier);
    EXPECT_EQ(sent(), QByteArray());
}

TEST_F(VideoInputTest, theCloseCommandAsksTheWindowToClose)
{
    class Window : public QWidget
    {
    public:
        int closes = 0;

    protected:
        void closeEvent(QCloseEvent *event) override
        {
            ++closes;
            event->ignore();
        }
    };
    Window window;
    view->setParent(&window);
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(window.closes, 1);
    EXPECT_EQ(sent(), QByteArray());
    view->setParent(nullptr);
}

TEST_F(VideoInputTest, noShortcutOfTheProgramTakesAKeyAwayThatTheAppIsToHave)
{
    for (const int key : {Qt::Key_V, Qt::Key_C, Qt::Key_X, Qt::Key_A, Qt::Key_W, Qt::Key_Tab})
        EXPECT_TRUE(isKept(key, Qt::ControlModifier)) << key;
    EXPECT_TRUE(isKept(Qt::Key_Escape, {}, QStringLiteral("\x1b")));
    EXPECT_TRUE(isKept(Qt::Key_Left));
    EXPECT_TRUE(isKept(Qt::Key_Left, Qt::MetaModifier));
    EXPECT_TRUE(isKept(Qt::Key_E, {}, QStringLiteral("e")));
    EXPECT_TRUE(isKept(Qt::Key_E, Qt::AltModifier, QStringLiteral("´")));
}

TEST_F(VideoInputTest, keysThatDoNothingHereAreLeftToTheProgramsShortcuts)
{
    EXPECT_FALSE(isKept(Qt::Key_Q, Qt::ControlModifier, QStringLiteral("q")));
    EXPECT_FALSE(isKept(Qt::Key_Left, Qt::ControlModifier));
    EXPECT_FALSE(isKept(Qt::Key_F5, {}, QString(QChar(0xF708))));
    EXPECT_FALSE(isKept(Qt::Key_Shift, Qt::ShiftModifier));
    EXPECT_FALSE(isKept(Qt::Key_C, Qt::MetaModifier, QStringLiteral("c")));
}

TEST_F(VideoInputTest, aShortcutOfTheProgramGetsWhatTheAppDoesNotWant)
{
    class Window : public QWidget
    {
    };
    Window window;
    view->setParent(&window);
    int quits = 0;
    int pastes = 0;
    QAction quit;
    quit.setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    QObject::connect(&quit, &QAction::triggered, [&quits] { ++quits; });
    QAction paste;
    paste.setShortcut(QKeySequence(Qt::CTRL | Qt::Key_V));
    QObject::connect(&paste, &QAction::triggered, [&pastes] { ++pastes; });
    window.addAction(&quit);
    window.addAction(&paste);
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    view->setFocus();
    fakes.pasteboard->put(QStringLiteral("text"));
    QTest::keyClick(view.get(), Qt::Key_Q, Qt::ControlModifier);
    QTest::keyClick(view.get(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(quits, 1);
    EXPECT_EQ(pastes, 0);
    EXPECT_EQ(sent(), bytes::clipboard(2, true, QStringLiteral("text")));
    view->setParent(nullptr);
}

TEST_F(VideoInputTest, controlTabAsksForTheKeyboardToGoOn)
{
    int leaves = 0;
    QObject::connect(input, &VideoInput::leaveRequested, [&leaves] { ++leaves; });
    press(Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(leaves, 1);
    press(Qt::Key_Tab);
    EXPECT_EQ(leaves, 1);
    EXPECT_EQ(sent(), bytes::key(61));
}

TEST_F(VideoInputTest, aTouchHitsThePixelThatIsDrawnThere)
{
    // The display was asked for in eights, so the picture of such a view is drawn unscaled in its middle, with three
    // pixels left over at its left and above it.
    const double scale = view->devicePixelRatioF();
    const QSizeF pixels(scale == 1.5 ? 399 : 398, 726);
    view->resize((pixels / scale).toSize());
    ASSERT_EQ(QSizeF(view->size()) * scale, pixels);
    announce(392, 720);
    const auto touchAt = [&](double x, double y) {
        const QPointF point(x / scale, y / scale);
        QMouseEvent event(QEvent::MouseButtonPress, point, point, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(view.get(), &event);
        return sent();
    };
    EXPECT_EQ(touchAt(3, 3), bytes::touch(bytes::down, 0, 0, 392, 720));
    EXPECT_EQ(touchAt(203, 363), bytes::touch(bytes::down, 200, 360, 392, 720));
    EXPECT_EQ(touchAt(394, 722), bytes::touch(bytes::down, 391, 719, 392, 720));
}

TEST_F(VideoInputTest, messagesCarryTheMomentAtWhichTheirInputCame)
{
    announce(400, 800);
    const auto moment = fakes.clock->monotonic();
    press(Qt::Key_Return);
    input->onBackRequest = [this] {
        // What is done about a press takes a while.
        fakes.clock->advance(5ms);
        input->sendBack();
    };
    press(Qt::Key_Escape);
    EXPECT_EQ(sender->moments, (std::vector<std::optional<std::chrono::nanoseconds>>(4, moment)));
    sender->moments.clear();
    input->sendBack();
    EXPECT_EQ(sender->moments, (std::vector<std::optional<std::chrono::nanoseconds>>(2, std::nullopt)));
}

TEST_F(VideoInputTest, aSizeThatNoMessageCanNameCountsAsUnknown)
{
    for (const double side : {65536.0, 4294967295.0}) {
        announce(side, 800);
        QTest::mouseClick(view.get(), Qt::LeftButton, {}, QPoint(200, 400));
        EXPECT_EQ(sent(), QByteArray());
    }
    announce(65535, 65535);
    QTest::mousePress(view.get(), Qt::LeftButton, {}, QPoint(0, 400));
    EXPECT_NE(sent(), QByteArray());
}

TEST_F(VideoInputTest, withoutADeviceInputDoesNothing)
{
    announce(400, 800);
    input->setSender({});
    QTest::mouseClick(view.get(), Qt::LeftButton, {}, QPoint(10, 10));
    wheel({}, {0, 120});
    press(Qt::Key_Return);
    press(Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
    fakes.pasteboard->put(QStringLiteral("text"));
    press(Qt::Key_V, Qt::ControlModifier);
    input->sendBack();
    EXPECT_EQ(sent(), QByteArray());
}
