#include "launcher/StatusText.h"

#include "PanelFixture.h"

#include <QContextMenuEvent>

using namespace quillnest;

namespace
{
class StatusTextTest : public PanelFixture
{
protected:
    StatusTextTest() { store->say(words); }
    const QString words = QStringLiteral("Android launch failed: ") + QStringLiteral("a very long story ").repeated(9);
};
} // namespace

TEST_F(StatusTextTest, whatDoesNotFitIsInTheToolTipInLinesThatBreak)
{
    const auto tip = part<StatusText>()->toolTip();
    EXPECT_TRUE(tip.contains(words));
    EXPECT_TRUE(Qt::mightBeRichText(tip)) << "the toolkit breaks no plain lines";
}

TEST_F(StatusTextTest, allOfItIsCopiedByItsMenuAndByTheKeyboard)
{
    auto *text = part<StatusText>();
    QContextMenuEvent event(QContextMenuEvent::Mouse, text->rect().center(), QPoint(200, 200));
    QApplication::sendEvent(text, &event);
    ASSERT_NE(openMenu(), nullptr);
    choose(openMenu(), QStringLiteral("Copy"));
    EXPECT_EQ(fakes.pasteboard->string(), words);
    fakes.pasteboard->setString({});
    EXPECT_EQ(text->focusPolicy(), Qt::TabFocus);
    text->setFocus(Qt::TabFocusReason);
    QTest::keySequence(text, QKeySequence::Copy);
    EXPECT_EQ(fakes.pasteboard->string(), words);
}

TEST_F(StatusTextTest, theWordsStandAtThePanelsMarginAndTheRingCutsNone)
{
    auto *text = part<StatusText>();
    EXPECT_EQ(text->mapTo(panel.get(), QPoint(StatusText::inset, 0)).x(), 16);
    const auto inside = text->rect().adjusted(StatusText::inset - 1, 3, -StatusText::inset, -3);
    const auto calm = inPoints(text->grab(inside));
    text->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(inPoints(text->grab(inside)), calm);
    EXPECT_NE(inPoints(text->grab()).pixelColor(text->width() / 2, 0), inPoints(panel->grab()).pixelColor(2, 740));
}
