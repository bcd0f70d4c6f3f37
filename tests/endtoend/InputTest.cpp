#include "endtoend/EndToEnd.h"

#include <QFile>

#include <vector>

namespace quillnest::driver
{

/// Tide in a window at one pixel for a point, with a keyboard of the United States.
class InputTest : public EndToEnd
{
protected:
    InputTest() : EndToEnd(small()) { }

    static TestDesktop::Options small()
    {
        TestDesktop::Options options;
        options.screen = {1200, 1000};
        options.scale = 1;
        options.sound = false;
        return options;
    }

    void SetUp() override
    {
        program.configureDevice({{QStringLiteral("bootSeconds"), 0.2}});
        setKeyboard({QStringLiteral("us")});
        program.start();
        openTide();
    }

    void setKeyboard(const QStringList &layout) const { desktop.run(QStringLiteral("setxkbmap"), layout); }

    QRect videoArea() const { return rectangle(program.window().value(QStringLiteral("videoArea")).toObject()); }
    QSize video() const
    {
        const auto window = program.window();
        return {
            window.value(QStringLiteral("videoWidth")).toInt(), window.value(QStringLiteral("videoHeight")).toInt()};
    }

    QJsonArray seen(const char *what) const { return program.device().value(QLatin1String(what)).toArray(); }
    QJsonArray waitForSeen(const char *what, qsizetype count) const
    {
        waitFor(QStringLiteral("%1 %2 on the device").arg(count).arg(QLatin1String(what)), 10, [this, what, count] {
            return seen(what).size() >= count;
        });
        return seen(what);
    }

    QString typed() const
    {
        return program.device().value(QStringLiteral("sessions")).toArray().first()[QStringLiteral("text")].toString();
    }
    void waitForTyped(const QString &text) const
    {
        waitFor(QStringLiteral("\"%1\" on the device").arg(text), 10, [this, &text] { return typed() == text; });
    }
    QStringList texts() const
    {
        QStringList result;
        for (const auto &entry : seen("texts"))
            result += entry[QStringLiteral("text")].toString();
        return result;
    }
};

TEST_F(InputTest, aClickAndADragReachTheAppWhereTheUserSeesThem)
{
    const auto area = videoArea();
    const auto size = video();
    const QPointF from = QPointF(area.topLeft()) + QPointF(100, 300);
    desktop.click(from);
    auto touches = waitForSeen("touches", 2);
    ASSERT_EQ(touches.size(), 2);
    EXPECT_EQ(touches[0][QStringLiteral("action")].toInt(), 0);
    EXPECT_EQ(touches[1][QStringLiteral("action")].toInt(), 1);
    // The picture lacks a few pixels of the area, half of them on each side.
    EXPECT_NEAR(touches[0][QStringLiteral("x")].toInt(), 100, 4);
    EXPECT_NEAR(touches[0][QStringLiteral("y")].toInt(), 300, 4);
    EXPECT_EQ(touches[0][QStringLiteral("frameWidth")].toInt(), size.width());
    EXPECT_EQ(touches[0][QStringLiteral("frameHeight")].toInt(), size.height());

    // Out of the window: the finger stays on the edge, and is lifted there.
    desktop.drag(from, {area.left() - 80.0, area.top() + 500.0});
    waitFor(QStringLiteral("the finger to be lifted"), 10, [this] {
        const auto all = seen("touches");
        return all.size() > 4 && all.last()[QStringLiteral("action")].toInt() == 1;
    });
    touches = seen("touches");
    EXPECT_EQ(touches[2][QStringLiteral("action")].toInt(), 0);
    for (qsizetype i = 3; i < touches.size() - 1; ++i) {
        EXPECT_EQ(touches[i][QStringLiteral("action")].toInt(), 2);
        EXPECT_LE(touches[i][QStringLiteral("x")].toInt(), touches[i - 1][QStringLiteral("x")].toInt());
        EXPECT_GE(touches[i][QStringLiteral("y")].toInt(), touches[i - 1][QStringLiteral("y")].toInt());
    }
    EXPECT_GE(touches.size(), 6) << "moves on the way";
    EXPECT_EQ(touches.last()[QStringLiteral("x")].toInt(), 0);
    EXPECT_NEAR(touches.last()[QStringLiteral("y")].toInt(), 500, 5);
}

TEST_F(InputTest, theWheelScrollsBothAxes)
{
    const QPointF at = videoArea().center();
    const auto notch = [this, at](int button, double horizontal, double vertical) {
        const auto before = seen("scrolls").size();
        desktop.click(at, button);
        const auto last = waitForSeen("scrolls", before + 1).last();
        EXPECT_EQ(seen("scrolls").size(), before + 1) << button;
        EXPECT_DOUBLE_EQ(last[QStringLiteral("horizontal")].toDouble(), horizontal) << button;
        EXPECT_DOUBLE_EQ(last[QStringLiteral("vertical")].toDouble(), vertical) << button;
    };
    notch(4, 0, 0.0625);
    notch(5, 0, -0.0625);
    notch(6, -0.0625, 0);
    notch(7, 0.0625, 0);
    EXPECT_TRUE(seen("touches").isEmpty());
}

TEST_F(InputTest, theRightButtonGoesBack)
{
    const int display = program.window().value(QStringLiteral("displayID")).toInt();
    program.deviceControl({QStringLiteral("push-screen"), QString::number(display)});
    desktop.click(videoArea().center(), 3);
    const auto keys = waitForSeen("keys", 2);
    ASSERT_EQ(keys.size(), 2);
    for (int action = 0; action < 2; ++action) {
        EXPECT_TRUE(keys[action][QStringLiteral("back")].toBool());
        EXPECT_EQ(keys[action][QStringLiteral("action")].toInt(), action);
    }
    EXPECT_TRUE(seen("touches").isEmpty());
}

TEST_F(InputTest, everyKeyOfTheTableArrivesAsThatKey)
{
    struct Key {
        const char *name;
        int code;
    };
    const std::vector<Key> keys{{"Return", 66}, {"KP_Enter", 66}, {"BackSpace", 67}, {"Delete", 112}, {"Tab", 61},
                                {"Left", 21},   {"Right", 22},    {"Down", 20},      {"Up", 19},      {"Home", 122},
                                {"End", 123},   {"Prior", 92},    {"Next", 93}};
    for (const auto &key : keys)
        desktop.key(QLatin1String(key.name));
    for (const auto &key : keys)
        desktop.key(QStringLiteral("shift+") + QLatin1String(key.name));
    const auto events = waitForSeen("keys", 4 * static_cast<qsizetype>(keys.size()));
    ASSERT_EQ(events.size(), 4 * static_cast<qsizetype>(keys.size()));
    for (qsizetype i = 0; i < events.size(); ++i) {
        const auto &key = keys.at(static_cast<std::size_t>(i / 2) % keys.size());
        EXPECT_EQ(events[i][QStringLiteral("keycode")].toInt(), key.code) << key.name;
        EXPECT_EQ(events[i][QStringLiteral("action")].toInt(), i % 2) << key.name;
        EXPECT_EQ(events[i][QStringLiteral("metaState")].toInt(), i < 2 * static_cast<qsizetype>(keys.size()) ? 0 : 1)
            << key.name;
    }
    EXPECT_EQ(texts(), QStringList());
    EXPECT_TRUE(program.window().value(QStringLiteral("active")).toBool());
}

TEST_F(InputTest, typedTextArrivesAsItWasTyped)
{
    const auto text = QStringLiteral("Quick brown Fox, 50% of #1 [~|\\]");
    desktop.type(text);
    waitForTyped(text);
    EXPECT_TRUE(seen("keys").isEmpty());
    // Modifiers alone and function keys say nothing.
    desktop.key(QStringLiteral("shift"));
    desktop.key(QStringLiteral("super"));
    desktop.key(QStringLiteral("F5"));
    desktop.type(QStringLiteral("!"));
    waitForTyped(text + QLatin1Char('!'));
    EXPECT_TRUE(seen("keys").isEmpty());
}

TEST_F(InputTest, charactersOfTheThirdLevelArrive)
{
    setKeyboard({QStringLiteral("de")});
    desktop.key(QStringLiteral("ISO_Level3_Shift+q"));
    desktop.key(QStringLiteral("ISO_Level3_Shift+e"));
    desktop.key(QStringLiteral("udiaeresis"));
    desktop.key(QStringLiteral("shift+udiaeresis"));
    waitForTyped(QStringLiteral("@€üÜ"));
    EXPECT_TRUE(seen("keys").isEmpty());
}

TEST_F(InputTest, aDeadKeyAndItsLetterArriveAsOneCharacter)
{
    setKeyboard({QStringLiteral("us"), QStringLiteral("-variant"), QStringLiteral("intl")});
    desktop.key(QStringLiteral("dead_acute"));
    desktop.key(QStringLiteral("e"));
    desktop.key(QStringLiteral("dead_diaeresis"));
    desktop.key(QStringLiteral("u"));
    waitForTyped(QStringLiteral("éü"));
    EXPECT_EQ(texts(), (QStringList{QStringLiteral("é"), QStringLiteral("ü")}));
}

TEST_F(InputTest, aSequenceOfTheComposeKeyArrivesAsItsCharacter)
{
    setKeyboard({QStringLiteral("us"), QStringLiteral("-option"), QStringLiteral("compose:ralt")});
    desktop.key(QStringLiteral("Multi_key"));
    desktop.key(QStringLiteral("o"));
    desktop.key(QStringLiteral("c"));
    desktop.key(QStringLiteral("Multi_key"));
    desktop.key(QStringLiteral("minus"));
    desktop.key(QStringLiteral("minus"));
    desktop.key(QStringLiteral("minus"));
    waitForTyped(QStringLiteral("©—"));
    EXPECT_EQ(texts(), (QStringList{QStringLiteral("©"), QStringLiteral("—")}));
}

TEST_F(InputTest, theClipboardsCommandsWorkBothWays)
{
    desktop.setClipboard(QStringLiteral("from outside "));
    desktop.key(QStringLiteral("ctrl+v"));
    waitForTyped(QStringLiteral("from outside "));
    desktop.type(QStringLiteral("and in"));
    waitForTyped(QStringLiteral("from outside and in"));
    desktop.key(QStringLiteral("ctrl+c"));
    waitFor(QStringLiteral("the copy"), 10, [this] {
        return desktop.clipboard() == QStringLiteral("from outside and in");
    });
    desktop.type(QStringLiteral(" and out"));
    desktop.key(QStringLiteral("ctrl+x"));
    waitFor(QStringLiteral("what was cut"), 10, [this] {
        return desktop.clipboard() == QStringLiteral("from outside and in and out");
    });
    waitForTyped({});
    EXPECT_TRUE(seen("keys").isEmpty());

    desktop.key(QStringLiteral("ctrl+a"));
    const auto keys = waitForSeen("keys", 2);
    for (int action = 0; action < 2; ++action) {
        EXPECT_EQ(keys[action][QStringLiteral("keycode")].toInt(), 29);
        EXPECT_EQ(keys[action][QStringLiteral("metaState")].toInt(), 0x3000);
        EXPECT_EQ(keys[action][QStringLiteral("action")].toInt(), action);
    }
    // No letter of a command is typed, nor of one that is none.
    desktop.key(QStringLiteral("ctrl+j"));
    desktop.key(QStringLiteral("ctrl+w"));
    waitForNoWindow();
    waitForLog(QStringLiteral("close package=app.quillnest.samples.tide reason=window close (Cmd+W)"));
    EXPECT_FALSE(texts().join(QString()).contains(QLatin1Char('j')));
}

TEST_F(InputTest, theHeaderIsReachedFromTheAppByTheKeyboard)
{
    desktop.key(QStringLiteral("ctrl+Tab"));
    // Home, back, size, pin: the buttons without a feature are passed over.
    for (int i = 0; i < 3; ++i)
        desktop.key(QStringLiteral("Tab"));
    EXPECT_FALSE(program.window().value(QStringLiteral("pinned")).toBool());
    desktop.key(QStringLiteral("space"));
    program.waitForState(QStringLiteral("the window to be pinned"), 10, [](const QJsonObject &state) {
        return windows(state).first()[QStringLiteral("pinned")].toBool();
    });
    EXPECT_TRUE(seen("keys").isEmpty()) << "the keys were the header's";
    EXPECT_EQ(texts(), QStringList());
    desktop.click(videoArea().center());
    desktop.type(QStringLiteral("x"));
    waitForTyped(QStringLiteral("x"));
}

TEST_F(InputTest, filesDraggedOverAWindowThatTakesNoneAreRefused)
{
    set(QStringLiteral("QuillnestAutoHide"), false);
    const auto path = desktop.home() + QStringLiteral("/note.txt");
    QFile(path).open(QIODevice::WriteOnly);
    const auto source = desktop.start(QStringLiteral(QUILLNEST_DRAG_SOURCE), {path});
    const auto xdotool = QStringLiteral("xdotool");
    waitFor(QStringLiteral("the other program's window"), 10, [this, &xdotool, &source] {
        const auto search = desktop.start(
            xdotool,
            {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--pid"),
             QString::number(source->processId())});
        search->waitForFinished(5000);
        return !search->readAllStandardOutput().isEmpty();
    });
    QByteArray said;
    const auto waitForWord = [&](const char *word) {
        waitFor(QLatin1String(word), 10, [&] {
            source->waitForReadyRead(20);
            said += source->readAllStandardOutput();
            return said.contains(word);
        });
    };
    desktop.moveMouse({140, 500});
    desktop.run(xdotool, {QStringLiteral("mousedown"), QStringLiteral("1")});
    waitForWord("dragging");
    const auto area = videoArea();
    const auto edge = area.topLeft() + QPoint(1, area.height() / 2);
    for (int i = 1; i <= 20; ++i)
        desktop.moveMouse(QPointF(140, 500) + (QPointF(area.center()) - QPointF(140, 500)) * i / 20);
    // The border would stand while pictures go on.
    waitForMorePictures();
    const auto border = desktop.screenshot(QRect(edge, QSize(1, 1))).pixelColor(0, 0);
    const auto beside = desktop.screenshot(QRect(edge + QPoint(6, 0), QSize(1, 1))).pixelColor(0, 0);
    EXPECT_EQ(border, beside) << border.name().toStdString() << " " << beside.name().toStdString();
    desktop.run(xdotool, {QStringLiteral("mouseup"), QStringLiteral("1")});
    waitForWord("refused");
    EXPECT_FALSE(said.contains("copied"));
    waitForMorePictures();
    desktop.click(area.center());
    waitForSeen("touches", 2);
    EXPECT_EQ(seen("touches").size(), 2) << "the drag itself touched nothing";
    source->kill();
    source->waitForFinished(5000);
}

} // namespace quillnest::driver
