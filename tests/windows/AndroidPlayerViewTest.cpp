#include "windows/AndroidPlayerView.h"

#include "fakes/FakePlatform.h"
#include "look/Palette.h"
#include "look/SymbolButton.h"
#include "windows/AndroidAppPanel.h"
#include "windows/WindowFakes.h"

#include <QBuffer>
#include <QPainter>
#include <QTest>
#include <QWindow>

#include <gtest/gtest.h>

namespace quillnest
{

namespace
{

using namespace std::chrono_literals;

const auto screencap = QStringLiteral("-s emulator-5556 exec-out screencap -p");
const auto bootQuery = QStringLiteral("-s emulator-5556 shell getprop sys.boot_completed");

/// A picture of a display whose top rows are red and whose others are of one colour.
QByteArray picture(QSize size = {1080, 2250}, QColor color = Qt::green, const char *format = "PNG")
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    QPainter(&image).fillRect(0, 0, size.width(), 96, Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(image.save(&buffer, format));
    return bytes;
}

class AndroidMirrorModelTest : public ::testing::Test
{
protected:
    AndroidMirrorModelTest()
    {
        fakes.platform.symbols = symbols;
        fakes.platform.profile.developmentScrcpy = fakes.path(QStringLiteral("dev/bin/scrcpy"));
        installedAdb = fakes.writeFile(QStringLiteral("dev/bin/adb"), "", true);
        sdkAdb = fakes.writeFile(QStringLiteral("Android/Sdk/platform-tools/adb"), "", true);
        emulator = fakes.writeFile(QStringLiteral("Android/Sdk/emulator/emulator"), "", true);
        fakes.writeFile(QStringLiteral("Application Support/Quillnest/Runtime/sdk/platform-tools/adb"), "", true);
        device("1\n");
        shows(picture());
        fakes.processes->onStart(QStringLiteral("emulator/emulator"), [](ScriptedChild &) {});
        log = std::make_shared<QuillnestLog>(
            fakes.clock, fakes.platform.folders.logs, QStringLiteral("quillnest.log"), false);
        model = std::make_unique<AndroidMirrorModel>(fakes.platform, log);
        QObject::connect(model.get(), &AndroidMirrorModel::changed, [this] {
            if (statuses.isEmpty() || statuses.constLast() != model->status())
                statuses.append(model->status());
        });
    }

    ~AndroidMirrorModelTest() override
    {
        model.reset();
        // What is still set keeps the platform, and with it the clock that keeps it.
        while (fakes.clock->advanceToNext())
            fakes.settle();
    }

    void device(const QByteArray &bootCompleted) { fakes.processes->on(bootQuery, bootCompleted); }
    void shows(const QByteArray &bytes) { fakes.processes->on(screencap, bytes); }
    void start()
    {
        model->start();
        fakes.settle();
    }
    void pass(std::chrono::milliseconds duration)
    {
        fakes.clock->advance(duration);
        fakes.settle();
    }
    qsizetype pictures() const { return fakes.processes->count(screencap); }
    QStringList inputs() const { return fakes.processes->lines().filter(QStringLiteral("shell input")); }
    QString input(const QString &arguments) const
    {
        return installedAdb + QStringLiteral(" -s emulator-5556 shell input ") + arguments;
    }

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<FakeSymbols> symbols = std::make_shared<FakeSymbols>();
    std::shared_ptr<QuillnestLog> log;
    QString installedAdb;
    QString sdkAdb;
    QString emulator;
    std::unique_ptr<AndroidMirrorModel> model;
    QStringList statuses;
};

TEST_F(AndroidMirrorModelTest, beginsWithoutAPicture)
{
    EXPECT_EQ(model->status(), QStringLiteral("Connecting to Android…"));
    EXPECT_FALSE(model->isRunning());
    EXPECT_FALSE(model->frame());
    EXPECT_TRUE(fakes.processes->lines().isEmpty());
}

TEST_F(AndroidMirrorModelTest, showsADeviceThatIsUp)
{
    model->start();
    EXPECT_TRUE(model->isRunning());
    EXPECT_EQ(model->status(), QStringLiteral("Starting Quillnest Android…"));
    fakes.settle();
    EXPECT_EQ(model->status(), QStringLiteral("Android connected"));
    EXPECT_EQ(
        fakes.processes->lines(), (QStringList{installedAdb + u' ' + bootQuery, installedAdb + u' ' + screencap}));
    EXPECT_TRUE(fakes.processes->children().empty()) << "an emulator was started";
}

TEST_F(AndroidMirrorModelTest, theSdksAdbStandsInForTheInstalledOne)
{
    QFile::remove(installedAdb);
    start();
    EXPECT_EQ(fakes.processes->lines(), (QStringList{sdkAdb + u' ' + bootQuery, sdkAdb + u' ' + screencap}));
}

TEST_F(AndroidMirrorModelTest, theTopOfThePictureIsCutOff)
{
    start();
    ASSERT_TRUE(model->frame());
    EXPECT_EQ(model->frame()->size(), QSize(1080, 2154));
    EXPECT_EQ(model->frame()->pixelColor(540, 0), QColor(Qt::green));
    EXPECT_EQ(model->frame()->pixelColor(540, 2153), QColor(Qt::green));
}

TEST_F(AndroidMirrorModelTest, theNextPictureIsTakenAfterAPause)
{
    start();
    EXPECT_EQ(pictures(), 1);
    pass(449ms);
    EXPECT_EQ(pictures(), 1);
    shows(picture({1080, 2250}, Qt::blue));
    pass(1ms);
    EXPECT_EQ(pictures(), 2);
    EXPECT_EQ(model->frame()->pixelColor(540, 1000), QColor(Qt::blue));
}

TEST_F(AndroidMirrorModelTest, bytesThatAreNoPictureAreWaitedOut)
{
    for (const auto &bytes :
         {QByteArray(), QByteArray("error: no devices/emulators found\n"), picture().first(200),
          picture({1080, 2250}, Qt::green, "BMP"), picture({1080, 96})}) {
        shows(bytes);
        start();
        EXPECT_EQ(model->status(), QStringLiteral("Waiting for Android display…"));
        EXPECT_FALSE(model->frame());
        model->stop();
    }
}

TEST_F(AndroidMirrorModelTest, theLastPictureStaysWhenNoOtherFollows)
{
    start();
    shows("");
    pass(450ms);
    EXPECT_EQ(model->status(), QStringLiteral("Waiting for Android display…"));
    EXPECT_TRUE(model->frame());
    shows(picture());
    pass(450ms);
    EXPECT_EQ(model->status(), QStringLiteral("Android connected"));
}

TEST_F(AndroidMirrorModelTest, adbThatCannotBeStartedIsWaitedOut)
{
    fakes.processes->on(QStringLiteral("/adb "), ScriptedProcesses::Answer{"", 0, QStringLiteral("no such file")});
    QFile::remove(emulator);
    start();
    EXPECT_EQ(model->status(), QStringLiteral("Waiting for Android display…"));
}

TEST_F(AndroidMirrorModelTest, startsTheEmulatorAndWaitsForIt)
{
    device("");
    start();
    ASSERT_EQ(fakes.processes->children().size(), 1U);
    EXPECT_EQ(
        fakes.processes->lines().constLast(),
        emulator
            + QStringLiteral(" @Quillnest_Android35 -port 5556 -no-window -no-audio -no-boot-anim -gpu host "
                             "-memory 2048"));
    EXPECT_EQ(model->status(), QStringLiteral("Starting Quillnest Android…"));
    pass(5s);
    EXPECT_EQ(pictures(), 0);
    device("1\r\n");
    pass(1s);
    EXPECT_EQ(model->status(), QStringLiteral("Android connected"));
    EXPECT_EQ(fakes.processes->children().size(), 1U);
    model->stop();
    EXPECT_EQ(fakes.processes->children().front()->terminations(), 0) << "the emulator stays";
}

TEST_F(AndroidMirrorModelTest, withoutAnEmulatorItLooksForADisplayAllTheSame)
{
    device("0");
    QFile::remove(emulator);
    start();
    EXPECT_EQ(
        statuses,
        (QStringList{
            QStringLiteral("Starting Quillnest Android…"), QStringLiteral("Android runtime unavailable"),
            QStringLiteral("Android connected")}));
    EXPECT_TRUE(fakes.processes->children().empty());
}

TEST_F(AndroidMirrorModelTest, anEmulatorThatEndsIsNotWaitedFor)
{
    device("");
    shows("");
    start();
    fakes.processes->children().front()->exit(1);
    pass(1s);
    EXPECT_EQ(
        statuses,
        (QStringList{
            QStringLiteral("Starting Quillnest Android…"), QStringLiteral("Android runtime unavailable"),
            QStringLiteral("Waiting for Android display…")}));
}

TEST_F(AndroidMirrorModelTest, aBootThatNeverEndsIsGivenUp)
{
    device("");
    shows("");
    start();
    for (int second = 0; second < 239; ++second)
        pass(1s);
    EXPECT_EQ(model->status(), QStringLiteral("Starting Quillnest Android…"));
    pass(1s);
    EXPECT_EQ(model->status(), QStringLiteral("Waiting for Android display…"));
    EXPECT_TRUE(statuses.contains(QStringLiteral("Android runtime unavailable")));
}

TEST_F(AndroidMirrorModelTest, anEmulatorThatCannotBeStartedEndsIt)
{
    device("");
    fakes.processes->onStart(
        QStringLiteral("emulator/emulator"), [](ScriptedChild &) { throw LaunchError(QStringLiteral("no memory")); });
    start();
    EXPECT_EQ(model->status(), QStringLiteral("Could not start Quillnest Android"));
    EXPECT_FALSE(model->isRunning());
    pass(5s);
    EXPECT_EQ(pictures(), 0);
    // Another try is a new one.
    device("1");
    start();
    EXPECT_EQ(model->status(), QStringLiteral("Android connected"));
}

TEST_F(AndroidMirrorModelTest, stopEndsTheLoop)
{
    start();
    model->stop();
    EXPECT_FALSE(model->isRunning());
    EXPECT_TRUE(model->frame()) << "the last picture stays";
    pass(5s);
    EXPECT_EQ(pictures(), 1);
}

TEST_F(AndroidMirrorModelTest, aPictureThatComesAfterTheStopIsNotShown)
{
    model->start();
    fakes.executor->runOneInBackground();
    fakes.executor->drainMain();
    ASSERT_EQ(fakes.executor->pendingInBackground(), 1U);
    model->stop();
    fakes.settle();
    EXPECT_EQ(pictures(), 1);
    EXPECT_FALSE(model->frame());
}

TEST_F(AndroidMirrorModelTest, aStartDuringThePauseLeavesOneLoop)
{
    start();
    start();
    EXPECT_EQ(pictures(), 1) << "a second start while it runs does nothing";
    model->stop();
    start();
    EXPECT_EQ(pictures(), 2);
    pass(450ms);
    EXPECT_EQ(pictures(), 3);
}

TEST_F(AndroidMirrorModelTest, aStartWhileTheEmulatorBootsStartsNoOther)
{
    device("");
    start();
    model->stop();
    pass(2s);
    start();
    EXPECT_EQ(fakes.processes->children().size(), 1U);
    device("1");
    pass(1s);
    EXPECT_EQ(model->status(), QStringLiteral("Android connected"));
}

TEST_F(AndroidMirrorModelTest, mayGoAtAnyMoment)
{
    // In the background, in a pause of the boot, and in a pause between two pictures.
    model->start();
    model = std::make_unique<AndroidMirrorModel>(fakes.platform, log);
    fakes.settle();
    device("");
    start();
    model = std::make_unique<AndroidMirrorModel>(fakes.platform, log);
    pass(2s);
    device("1");
    start();
    model.reset();
    pass(2s);
    EXPECT_EQ(pictures(), 1);
}

TEST_F(AndroidMirrorModelTest, tapsAreScaledAndTruncated)
{
    model->tap({100.5, 200.25}, {390, 760});
    model->tap({0, 0}, {390, 760});
    model->tap({540, 1077}, {1080, 2154});
    EXPECT_TRUE(inputs().isEmpty()) << "adb ran on the main thread";
    fakes.settle();
    // 100.5 / 390 * 1080 is 278.3, 200.25 / 760 * 2154 + 96 is 663.55.
    EXPECT_EQ(
        inputs(),
        (QStringList{
            input(QStringLiteral("tap 278 663")), input(QStringLiteral("tap 0 96")),
            input(QStringLiteral("tap 540 1173"))}));
}

TEST_F(AndroidMirrorModelTest, swipesTakeBothPointsAndTheirTime)
{
    model->swipe({195, 700}, {195, 100}, {390, 760});
    fakes.settle();
    EXPECT_EQ(inputs(), QStringList{input(QStringLiteral("swipe 540 2079 540 379 220"))});
}

TEST_F(AndroidMirrorModelTest, keysAreSentByTheirCode)
{
    model->key(66);
    fakes.settle();
    EXPECT_EQ(inputs(), QStringList{input(QStringLiteral("keyevent 66"))});
}

TEST_F(AndroidMirrorModelTest, aViewWithoutSizeHasNoPoints)
{
    model->tap({1, 1}, {0, 760});
    model->swipe({1, 1}, {2, 2}, {390, 0});
    fakes.settle();
    EXPECT_TRUE(inputs().isEmpty());
}

/// The view in the window that it is made for.
class AndroidPlayerViewTest : public AndroidMirrorModelTest
{
protected:
    AndroidPlayerViewTest()
        : services{
            fakes.platform, log, std::make_shared<ChangeNotifications>(),
            std::make_shared<const AndroidCommands>(fakes.platform, log)}
    {
        panel = std::make_unique<AndroidAppPanel>(fakes.platform, AndroidAppPanel::Resizing::atEdges);
        view = new AndroidPlayerView(services, QStringLiteral("Tide"), panel.get());
        QObject::connect(view, &AndroidPlayerView::closeRequested, view, [this] { ++closes; });
        // As wide as the picture and, below the header, 100 points higher.
        panel->setGeometry(100, 100, 360, 36 + 718 + 100);
        view->setGeometry(panel->rect());
    }

    void show()
    {
        panel->show();
        fakes.settle();
    }

    template <typename Widget = QWidget> Widget &named(const char *name) const
    {
        for (auto *widget : view->findChildren<Widget *>()) {
            if (widget->accessibleName() == QLatin1String(name))
                return *widget;
        }
        throw std::runtime_error("nothing has this name");
    }
    QWidget &display() const { return named("Android display"); }

    void drag(QPoint from, QPoint to) const
    {
        QTest::mousePress(&display(), Qt::LeftButton, {}, from);
        QTest::mouseRelease(&display(), Qt::LeftButton, {}, to);
        fakes.settle();
    }

    WindowServices services;
    std::unique_ptr<AndroidAppPanel> panel;
    AndroidPlayerView *view = nullptr;
    int closes = 0;
};

TEST_F(AndroidPlayerViewTest, mirrorsWhileItIsShown)
{
    EXPECT_FALSE(view->mirror().isRunning());
    show();
    EXPECT_TRUE(view->mirror().isRunning());
    EXPECT_EQ(view->mirror().status(), QStringLiteral("Android connected"));
    panel->hide();
    EXPECT_FALSE(view->mirror().isRunning());
    show();
    EXPECT_TRUE(view->mirror().isRunning());
    panel.reset();
    pass(5s);
    EXPECT_EQ(pictures(), 2);
}

TEST_F(AndroidPlayerViewTest, theHeaderHoldsItsItems)
{
    EXPECT_EQ(view->title(), QStringLiteral("Tide"));
    show();
    view->grab();
    QStringList names;
    for (const auto *button : view->findChildren<SymbolButton *>())
        names.append(button->accessibleName());
    EXPECT_EQ(
        names,
        (QStringList{
            QStringLiteral("Back to app library"), QStringLiteral("Android Back"),
            QStringLiteral("Keep window on top")}));
    for (const auto *symbol : {"chevron.backward", "arrow.uturn.backward", "pin"})
        EXPECT_TRUE(symbols->asked.contains(QLatin1String(symbol))) << symbol;
}

TEST_F(AndroidPlayerViewTest, noButtonHasTheKeyboardAtFirst)
{
    show();
    EXPECT_EQ(panel->focusWidget(), &display());
}

TEST_F(AndroidPlayerViewTest, theWayBackToTheLibraryIsTheOwners)
{
    named<SymbolButton>("Back to app library").click();
    EXPECT_EQ(closes, 1);
}

TEST_F(AndroidPlayerViewTest, theArrowIsAndroidsBackKey)
{
    named<SymbolButton>("Android Back").click();
    fakes.settle();
    EXPECT_EQ(inputs(), QStringList{input(QStringLiteral("keyevent 4"))});
}

TEST_F(AndroidPlayerViewTest, thePinKeepsTheWindowOnTop)
{
    show();
    auto &pin = named<SymbolButton>("Keep window on top");
    EXPECT_FALSE(view->isPinned());
    pin.click();
    EXPECT_TRUE(view->isPinned());
    EXPECT_TRUE(panel->isFloating());
    view->grab();
    EXPECT_EQ(symbols->asked.constLast(), QStringLiteral("pin.fill"));
    pin.click();
    EXPECT_FALSE(view->isPinned());
    EXPECT_FALSE(panel->isFloating());
}

TEST_F(AndroidPlayerViewTest, aClickOnThePictureIsATap)
{
    show();
    // The picture is 360 by 718 points, 50 below the top.
    QTest::mouseClick(&display(), Qt::LeftButton, {}, QPoint(180, 50 + 359));
    fakes.settle();
    EXPECT_EQ(inputs(), QStringList{input(QStringLiteral("tap 540 1173"))});
}

TEST_F(AndroidPlayerViewTest, aClickBesideThePictureIsNothing)
{
    show();
    QTest::mouseClick(&display(), Qt::LeftButton, {}, QPoint(180, 49));
    QTest::mouseClick(&display(), Qt::LeftButton, {}, QPoint(180, 50 + 718));
    fakes.settle();
    EXPECT_TRUE(inputs().isEmpty());
}

TEST_F(AndroidPlayerViewTest, theOtherButtonIsNothing)
{
    show();
    QTest::mouseClick(&display(), Qt::RightButton, {}, QPoint(180, 400));
    // Nor does it make a tap of a press beside the picture.
    QTest::mousePress(&display(), Qt::LeftButton, {}, QPoint(180, 20));
    QTest::mousePress(&display(), Qt::RightButton, {}, QPoint(180, 400));
    QTest::mouseRelease(&display(), Qt::LeftButton, {}, QPoint(180, 400));
    fakes.settle();
    EXPECT_TRUE(inputs().isEmpty());
}

TEST_F(AndroidPlayerViewTest, aClickBeforeTheFirstPictureIsNothing)
{
    shows("");
    show();
    QTest::mouseClick(&display(), Qt::LeftButton, {}, QPoint(180, 400));
    fakes.settle();
    EXPECT_TRUE(inputs().isEmpty());
}

TEST_F(AndroidPlayerViewTest, aDragIsASwipeAndAShakyClickIsNone)
{
    show();
    drag({180, 50 + 359}, {180, 50 + 359 - 180});
    drag({180, 50 + 359}, {186, 50 + 359 - 6});
    EXPECT_EQ(
        inputs(),
        (QStringList{input(QStringLiteral("swipe 540 1173 540 633 220")), input(QStringLiteral("tap 540 1173"))}));
}

TEST_F(AndroidPlayerViewTest, aSwipeEndsAtTheEdgeOfThePicture)
{
    show();
    drag({180, 50 + 359}, {500, 0});
    EXPECT_EQ(inputs(), QStringList{input(QStringLiteral("swipe 540 1173 1079 96 220"))});
}

TEST_F(AndroidPlayerViewTest, thePictureStandsInTheMiddleWithBarsBesideIt)
{
    show();
    const auto image = display().grab().toImage();
    const auto at = [&image](int x, int y) { return image.pixelColor(QPoint(x, y) * image.devicePixelRatio()); };
    EXPECT_EQ(at(180, 40), Palette::light().windowBackground);
    EXPECT_EQ(at(180, 55), QColor(Qt::green));
    EXPECT_EQ(at(5, 400), QColor(Qt::green));
    EXPECT_EQ(at(180, 50 + 712), QColor(Qt::green));
    EXPECT_EQ(at(180, 50 + 730), Palette::light().windowBackground);
}

TEST_F(AndroidPlayerViewTest, theStatusStandsWhereThePictureWillBe)
{
    shows("");
    EXPECT_EQ(display().accessibleDescription(), QStringLiteral("Connecting to Android…"));
    show();
    EXPECT_EQ(display().accessibleDescription(), QStringLiteral("Waiting for Android display…"));
    // The device's outline above the middle and the text below it, on the window's own background.
    const auto image = display().grab().toImage();
    const auto background = Palette::light().windowBackground;
    EXPECT_EQ(image.pixelColor(4, 4), background);
    const auto marked = [&image, &background](int from, int to) {
        const auto scale = image.devicePixelRatio();
        int count = 0;
        for (int y = image.height() / 2 + qRound(from * scale); y < image.height() / 2 + qRound(to * scale); ++y) {
            for (int x = 0; x < image.width(); ++x)
                count += image.pixelColor(x, y) != background ? 1 : 0;
        }
        return count;
    };
    EXPECT_GT(marked(-60, 4), 100);
    EXPECT_GT(marked(12, 44), 200);
    EXPECT_EQ(marked(-380, -60), 0);
    EXPECT_EQ(marked(44, 380), 0);
}

TEST_F(AndroidPlayerViewTest, itsColoursAreTheDesktops)
{
    shows("");
    show();
    const auto colors = [this] {
        const auto image = view->grab().toImage();
        return std::pair(image.pixelColor(image.width() / 2, 4), image.pixelColor(4, image.height() / 2));
    };
    EXPECT_EQ(colors(), std::pair(Palette::light().headerBackground, Palette::light().windowBackground));
    fakes.appearance->setDark(true);
    EXPECT_EQ(colors(), std::pair(Palette::dark().headerBackground, Palette::dark().windowBackground));
}

} // namespace

} // namespace quillnest
