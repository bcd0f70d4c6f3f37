#include "windows/HeaderView.h"

#include "fakes/FakePlatform.h"
#include "look/Palette.h"
#include "look/SymbolButton.h"
#include "windows/WindowFakes.h"

#include <QLabel>
#include <QLayout>
#include <QTest>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{

class HeaderViewTest : public ::testing::Test
{
protected:
    HeaderViewTest()
    {
        fakes.platform.symbols = symbols;
        header = std::make_unique<HeaderView>(fakes.platform, QStringLiteral("Example"));
        header->resize(390, 36);
    }

    std::vector<SymbolButton *> buttons() const
    {
        std::vector<SymbolButton *> result;
        for (int i = 0; i < header->layout()->count(); ++i) {
            if (auto *button = qobject_cast<SymbolButton *>(header->layout()->itemAt(i)->widget()))
                result.push_back(button);
        }
        return result;
    }

    /// The colour in the middle of a button, where its symbol is.
    QColor color(int button) const
    {
        const auto image = buttons().at(static_cast<std::size_t>(button))->grab().toImage();
        return image.pixelColor(image.rect().center());
    }

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<FakeSymbols> symbols = std::make_shared<FakeSymbols>();
    std::unique_ptr<HeaderView> header;
};

} // namespace

TEST_F(HeaderViewTest, itemsStandInTheirOrderWithSymbolsAndNames)
{
    const std::vector<std::pair<QString, QString>> expected{
        {QStringLiteral("square.grid.2x2"), QStringLiteral("Quillnest apps")},
        {QStringLiteral("chevron.left"), QStringLiteral("Android Back (Esc / right-click)")},
        {QStringLiteral("camera"), QStringLiteral("Screenshot / screen recording")},
        {QStringLiteral("bell"), QStringLiteral("Notifications")},
        {QStringLiteral("aspectratio"), QStringLiteral("Window size")},
        {QStringLiteral("pin"), QStringLiteral("Pin on top (keeps the window open)")},
        {QStringLiteral("minus"), QStringLiteral("Hide")},
        {QStringLiteral("xmark"), QStringLiteral("Close app")},
    };
    const auto present = buttons();
    ASSERT_EQ(present.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        symbols->asked.clear();
        present[i]->grab();
        EXPECT_EQ(symbols->asked, QStringList{expected[i].first});
        EXPECT_EQ(present[i]->toolTip(), expected[i].second);
        EXPECT_EQ(present[i]->accessibleName(), expected[i].second);
        EXPECT_EQ(present[i]->width(), 22);
        const auto left = [this](const QWidget *button) { return button->mapTo(header.get(), QPoint()).x(); };
        if (i > 0) {
            EXPECT_GT(left(present[i]), left(present[i - 1]));
        }
    }
    EXPECT_EQ(header->height(), 36);
    const auto *title = header->findChild<QLabel *>();
    EXPECT_EQ(title->text(), QStringLiteral("Example"));
    EXPECT_GT(title->x(), present[1]->x());
    EXPECT_LT(title->x(), present[2]->x());
    EXPECT_EQ(title->font().pixelSize(), 13);
    EXPECT_EQ(title->font().weight(), QFont::DemiBold);
}

TEST_F(HeaderViewTest, eachButtonTellsItsOwnEvent)
{
    QStringList calls;
    QWidget *sizeFrom = nullptr;
    QWidget *captureFrom = nullptr;
    const auto note = [&calls](const QString &name) { return [&calls, name] { calls.append(name); }; };
    auto *subject = header.get();
    QObject::connect(subject, &HeaderView::homeRequested, subject, note(QStringLiteral("home")));
    QObject::connect(subject, &HeaderView::backRequested, subject, note(QStringLiteral("back")));
    QObject::connect(subject, &HeaderView::captureMenuRequested, subject, [&](QWidget *from) {
        calls.append(QStringLiteral("capture"));
        captureFrom = from;
    });
    QObject::connect(subject, &HeaderView::shadeRequested, subject, note(QStringLiteral("shade")));
    QObject::connect(subject, &HeaderView::sizeMenuRequested, subject, [&](QWidget *from) {
        calls.append(QStringLiteral("size"));
        sizeFrom = from;
    });
    QObject::connect(subject, &HeaderView::pinToggled, subject, note(QStringLiteral("pin")));
    QObject::connect(subject, &HeaderView::hideRequested, subject, note(QStringLiteral("hide")));
    QObject::connect(subject, &HeaderView::closeRequested, subject, note(QStringLiteral("close")));
    const auto present = buttons();
    for (auto *button : present)
        QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(calls.join(QLatin1Char(' ')), QStringLiteral("home back capture shade size pin hide close"));
    EXPECT_EQ(captureFrom, present[2]);
    EXPECT_EQ(sizeFrom, present[4]);
}

TEST_F(HeaderViewTest, aPinnedWindowShowsAFilledPinInTheAccentColour)
{
    constexpr int pin = 5;
    EXPECT_EQ(color(pin), Palette::light().secondaryLabel);
    header->setPinned(true);
    symbols->asked.clear();
    EXPECT_EQ(color(pin), Palette::light().controlAccent);
    EXPECT_EQ(symbols->asked, QStringList{QStringLiteral("pin.fill")});
    header->setPinned(false);
    symbols->asked.clear();
    EXPECT_EQ(color(pin), Palette::light().secondaryLabel);
    EXPECT_EQ(symbols->asked, QStringList{QStringLiteral("pin")});
}

TEST_F(HeaderViewTest, buttonsWithoutAFeatureAreNotShown)
{
    header->setShadeAvailable(false);
    header->setCaptureAvailable(false);
    const auto shown = [this] {
        QStringList names;
        for (const auto *button : buttons()) {
            if (button->isVisibleTo(header.get()))
                names.append(button->accessibleName());
        }
        return names;
    };
    EXPECT_FALSE(shown().contains(QStringLiteral("Notifications")));
    EXPECT_FALSE(shown().contains(QStringLiteral("Screenshot / screen recording")));
    EXPECT_TRUE(shown().contains(QStringLiteral("Window size")));
    int calls = 0;
    QObject::connect(header.get(), &HeaderView::shadeRequested, header.get(), [&calls] { ++calls; });
    QObject::connect(header.get(), &HeaderView::captureMenuRequested, header.get(), [&calls] { ++calls; });
    header->setShadeAvailable(true);
    header->setCaptureAvailable(true);
    for (auto *button : buttons())
        QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(calls, 2);
}

TEST_F(HeaderViewTest, aButtonIsReachedByTabAndAClickLeavesTheKeyboardWhereItIs)
{
    for (const auto *button : buttons())
        EXPECT_EQ(button->focusPolicy(), Qt::TabFocus);
    int calls = 0;
    QObject::connect(header.get(), &HeaderView::hideRequested, header.get(), [&calls] { ++calls; });
    QTest::keyClick(buttons().at(6), Qt::Key_Space);
    EXPECT_EQ(calls, 1);
}

TEST_F(HeaderViewTest, aLongTitleGivesWayToTheButtons)
{
    HeaderView narrow(fakes.platform, QString(200, QLatin1Char('M')));
    narrow.resize(280, 36);
    narrow.grab();
    EXPECT_LE(narrow.minimumSizeHint().width(), 280);
    const auto *close = narrow.layout()->itemAt(narrow.layout()->count() - 1)->widget();
    EXPECT_LE(close->x() + close->width(), 280);
}

TEST_F(HeaderViewTest, itTakesTheColoursOfTheAppearance)
{
    const auto background = [this] {
        const auto image = header->grab().toImage();
        return image.pixelColor(2, 10);
    };
    EXPECT_EQ(background(), Palette::light().headerBackground);
    EXPECT_EQ(color(0), Palette::light().secondaryLabel);
    fakes.appearance->setDark(true);
    EXPECT_EQ(background(), Palette::dark().headerBackground);
    EXPECT_EQ(color(0), Palette::dark().secondaryLabel);
}

TEST_F(HeaderViewTest, aChangeOfTheAppearanceIsShownAtOnce)
{
    header->setWindowFlag(Qt::FramelessWindowHint);
    header->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(header.get()));
    fakes.settle();
    symbols->asked.clear();
    fakes.appearance->setDark(true);
    EXPECT_TRUE(QTest::qWaitFor([this] { return symbols->asked.size() >= 8; }, 30000));
}

TEST(WindowDrag, beginsOnceWithTheFirstRealMovementAndNotAtAClick)
{
    WindowDrag drag;
    const auto event = [](QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::MouseButtons held) {
        return QMouseEvent(type, at, at, button, held, {});
    };
    const auto press = [&](Qt::MouseButton button) {
        drag.pressed(event(QEvent::MouseButtonPress, {50, 10}, button, button));
    };
    const auto begins = [&](QPointF at, Qt::MouseButtons held) {
        return drag.begins(event(QEvent::MouseMove, at, Qt::NoButton, held));
    };
    EXPECT_FALSE(begins({90, 10}, Qt::LeftButton)) << "nothing was pressed here";
    press(Qt::LeftButton);
    EXPECT_FALSE(begins({51, 11}, Qt::LeftButton));
    EXPECT_FALSE(begins({90, 10}, Qt::NoButton)) << "released before it moved";
    EXPECT_TRUE(begins({90, 10}, Qt::LeftButton));
    EXPECT_FALSE(begins({95, 10}, Qt::LeftButton));
    press(Qt::RightButton);
    EXPECT_FALSE(begins({90, 10}, Qt::RightButton));
}
