#include "windows/AndroidVideoView.h"

#include "windows/ControlBytes.h"
#include "windows/LoopbackDevice.h"
#include "windows/WindowFakes.h"

#include <QApplication>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QMimeData>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{

/// A view of 400 by 800 points on a stream whose device is this test.
class VideoInputTest : public ::testing::Test
{
protected:
    VideoInputTest()
    {
        fakes.platform.video = video;
        view = std::make_unique<AndroidVideoView>(fakes.platform);
        view->resize(400, 800);
        const auto log = std::make_shared<QuillnestLog>(
            fakes.clock, fakes.platform.folders.logs, QStringLiteral("stream.log"), true);
        AndroidStreamClient::Config config;
        config.adb = QStringLiteral("adb");
        config.serial = QStringLiteral("emulator-5556");
        config.package = QStringLiteral("org.example.app");
        client = AndroidStreamClient::create(fakes.platform, config, view->renderer(), log);
        client->start();
        device.connect(*client);
        view->setClient(client);
    }

    ~VideoInputTest() override
    {
        const std::weak_ptr<AndroidStreamClient> watched = client;
        client->stop();
        client.reset();
        EXPECT_TRUE(comesTrue(fakes, [&watched] { return watched.expired(); }));
    }

    QByteArray sent() { return device.sent(*client); }
    void announce(int width, int height) { device.announce(*client, {width, height}); }

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

    /// Whether the view takes what is dragged over it, and whether it takes what is dropped.
    std::pair<bool, bool> drop(const QList<QUrl> &urls)
    {
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QApplication::sendEvent(view.get(), &enter);
        QDropEvent event(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        event.ignore();
        QApplication::sendEvent(view.get(), &event);
        return {enter.isAccepted(), event.isAccepted()};
    }

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<FakeVideo> video = std::make_shared<FakeVideo>();
    LoopbackDevice device{fakes};
    std::unique_ptr<AndroidVideoView> view;
    std::shared_ptr<AndroidStreamClient> client;
};

} // namespace

TEST(VideoPoint, isScaledAndLetterboxedAndClampedToThePicture)
{
    struct Row {
        QPointF point;
        QSizeF view;
        QSizeF video;
        QPointF expected;
    };
    const std::vector<Row> table{
        {{200, 400}, {400, 800}, {800, 800}, {400, 400}},
        {{200, 50}, {400, 800}, {800, 800}, {400, 0}},
        {{200, 799}, {400, 800}, {800, 800}, {400, 799}},
        {{0, 0}, {390, 724}, {390, 724}, {0, 0}},
        {{389, 723}, {390, 724}, {390, 724}, {389, 723}},
        {{400, 900}, {390, 724}, {390, 724}, {389, 723}},
        {{-5, -5}, {390, 724}, {390, 724}, {0, 0}},
        {{0, 100}, {800, 200}, {100, 100}, {0, 50}},
        {{300, 0}, {800, 200}, {100, 100}, {0, 0}},
        {{799, 199}, {800, 200}, {100, 100}, {99, 99}},
        {{500, 100}, {800, 200}, {100, 100}, {99, 50}},
        {{10, 20}, {100, 200}, {776, 1448}, {10 * 7.76, (20 - (200 - 1448 / 7.76) / 2) * 7.76}},
    };
    for (const auto &row : table) {
        const auto point = AndroidVideoView::videoPoint(row.point, row.view, row.video);
        EXPECT_NEAR(point.x(), row.expected.x(), 1e-6) << row.point.x() << "," << row.point.y();
        EXPECT_NEAR(point.y(), row.expected.y(), 1e-6) << row.point.x() << "," << row.point.y();
    }
}

TEST(PictureRect, isUnscaledWhenOnlyTheRoundingOfTheDisplaySizeIsMissing)
{
    struct Row {
        QSizeF view;
        QSize picture;
        QRect expected;
    };
    const std::vector<Row> table{
        {{776, 1448}, {776, 1448}, {0, 0, 776, 1448}},
        // 390 by 724 points at a scale of 1.25: the half pixel is one of the screen's, and none of the display's.
        {{487.5, 905}, {480, 904}, {4, 0, 480, 904}},
        {{488, 905}, {480, 904}, {4, 0, 480, 905}},
        {{488.25, 905}, {488, 904}, {0, 0, 488, 904}},
        {{780, 1448}, {776, 1448}, {2, 0, 776, 1448}},
        {{783, 1455}, {776, 1448}, {3, 3, 776, 1448}},
        // Eight pixels are more than the rounding.
        {{784, 1448}, {776, 1448}, {4, 0, 776, 1448}},
        {{784, 1455}, {776, 1448}, {2, 0, 779, 1455}},
        {{783, 1456}, {776, 1448}, {1, 0, 780, 1456}},
        {{784, 1456}, {776, 1448}, {2, 0, 780, 1456}},
        {{775, 1448}, {776, 1448}, {0, 1, 775, 1446}},
        {{400, 800}, {800, 800}, {0, 200, 400, 400}},
        {{800, 400}, {100, 100}, {200, 0, 400, 400}},
        {{0, 400}, {100, 100}, {}},
        {{400, 400}, {0, 100}, {}},
    };
    for (const auto &row : table)
        EXPECT_EQ(AndroidVideoView::pictureRect(row.view, row.picture), row.expected)
            << row.view.width() << "x" << row.view.height();
}

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
    view->onBackRequest = [&asked] { ++asked; };
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
    view->onBackRequest = [&asked] { ++asked; };
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

TEST_F(VideoInputTest, anInputMethodIsOfferedAPlaceAndSendsEachCommitOnceHoweverItGotThere)
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
    QInputMethodQueryEvent query(Qt::ImEnabled | Qt::ImCursorRectangle);
    QApplication::sendEvent(view.get(), &query);
    EXPECT_TRUE(query.value(Qt::ImEnabled).toBool());
    const auto place = query.value(Qt::ImCursorRectangle).toRect();
    EXPECT_TRUE(view->rect().contains(place));
    EXPECT_FALSE(place.isEmpty());
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
    view->pasteFromMac();
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

TEST_F(VideoInputTest, noShortcutOfTheProgramTakesAKeyAway)
{
    QKeyEvent event(QEvent::ShortcutOverride, Qt::Key_C, Qt::ControlModifier);
    event.ignore();
    QApplication::sendEvent(view.get(), &event);
    EXPECT_TRUE(event.isAccepted());
}

TEST_F(VideoInputTest, withoutAClientInputDoesNothing)
{
    announce(400, 800);
    view->setClient({});
    QTest::mouseClick(view.get(), Qt::LeftButton, {}, QPoint(10, 10));
    wheel({}, {0, 120});
    press(Qt::Key_Return);
    press(Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
    fakes.pasteboard->put(QStringLiteral("text"));
    press(Qt::Key_V, Qt::ControlModifier);
    view->sendBack();
    EXPECT_EQ(sent(), QByteArray());
}

TEST_F(VideoInputTest, droppedFilesAreHandedOnWithoutTheFoldersAmongThem)
{
    QList<QUrl> dropped;
    view->onFilesDropped = [&dropped](const QList<QUrl> &files) { dropped = files; };
    const auto file = QUrl::fromLocalFile(fakes.writeFile(QStringLiteral("a.txt"), "a"));
    const auto folder = QUrl::fromLocalFile(fakes.home->path());
    EXPECT_EQ(drop({folder, file}), std::pair(true, true));
    EXPECT_EQ(dropped, QList<QUrl>{file});
}

TEST_F(VideoInputTest, aFolderAloneAndAWebAddressAreRefused)
{
    int drops = 0;
    view->onFilesDropped = [&drops](const QList<QUrl> &) { ++drops; };
    EXPECT_EQ(drop({QUrl::fromLocalFile(fakes.home->path())}), std::pair(false, false));
    EXPECT_EQ(drop({QUrl(QStringLiteral("https://example.org/a.txt"))}), std::pair(false, false));
    EXPECT_EQ(drop({}), std::pair(false, false));
    EXPECT_EQ(drops, 0);
}

TEST_F(VideoInputTest, withNobodyToTakeFilesDropsAreRefused)
{
    const auto file = QUrl::fromLocalFile(fakes.writeFile(QStringLiteral("a.txt"), "a"));
    EXPECT_EQ(drop({file}), std::pair(false, false));
}

TEST_F(VideoInputTest, aBorderStandsWhileFilesAreDraggedOver)
{
    view->onFilesDropped = [](const QList<QUrl> &) {};
    const auto edge = [this] { return view->grab().toImage().pixelColor(1, 400); };
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(fakes.writeFile(QStringLiteral("a.txt"), "a"))});
    EXPECT_EQ(edge(), QColor(Qt::black));
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.get(), &enter);
    EXPECT_NE(edge(), QColor(Qt::black));
    QDragLeaveEvent leave;
    QApplication::sendEvent(view.get(), &leave);
    EXPECT_EQ(edge(), QColor(Qt::black));
    QApplication::sendEvent(view.get(), &enter);
    QDropEvent event(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.get(), &event);
    EXPECT_EQ(edge(), QColor(Qt::black));
}
