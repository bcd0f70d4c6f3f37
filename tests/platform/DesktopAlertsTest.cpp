#include "platform/desktop/DesktopAlerts.h"

#include "platform/Conditions.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTest>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{

class DesktopAlertsTest : public ::testing::Test
{
protected:
    void ask(Alert::Style style = Alert::Style::warning)
    {
        alerts.ask(
            {QStringLiteral("Uninstall <b>Moon</b>?"),
             QStringLiteral("The app goes."),
             {QStringLiteral("Uninstall"), QStringLiteral("Cancel")},
             style},
            [this](int button) { answers.push_back(button); });
        ASSERT_TRUE(comesTrue([this] { return box() && box()->isActiveWindow(); }));
    }

    static QMessageBox *box()
    {
        for (auto *widget : QApplication::topLevelWidgets()) {
            auto *found = qobject_cast<QMessageBox *>(widget);
            if (found && found->isVisible())
                return found;
        }
        return nullptr;
    }

    static QAbstractButton *button(const QString &title)
    {
        for (auto *candidate : box()->buttons()) {
            if (candidate->text().remove(QLatin1Char('&')) == title)
                return candidate;
        }
        return nullptr;
    }

    bool answered() const
    {
        return comesTrue([this] { return !answers.empty(); });
    }

    DesktopAlerts alerts;
    std::vector<int> answers;
};

} // namespace

TEST_F(DesktopAlertsTest, showsItsTextsAsTheyStand)
{
    ask();
    EXPECT_EQ(box()->text(), QStringLiteral("Uninstall <b>Moon</b>?"));
    EXPECT_EQ(box()->textFormat(), Qt::PlainText);
    EXPECT_EQ(box()->informativeText(), QStringLiteral("The app goes."));
    EXPECT_EQ(box()->icon(), QMessageBox::Warning);
    EXPECT_TRUE(answers.empty()) << "the caller is not blocked";
    QTest::mouseClick(button(QStringLiteral("Cancel")), Qt::LeftButton);
    EXPECT_TRUE(answered());
    EXPECT_EQ(answers, std::vector{1});
}

TEST_F(DesktopAlertsTest, theReturnKeyIsTheFirstButtonAndOfAWarningTheLast)
{
    ask(Alert::Style::informational);
    QTest::keyClick(box(), Qt::Key_Return);
    EXPECT_TRUE(answered());
    EXPECT_EQ(answers, std::vector{0});
    answers.clear();
    ask(Alert::Style::warning);
    QTest::keyClick(box(), Qt::Key_Return);
    EXPECT_TRUE(answered());
    EXPECT_EQ(answers, std::vector{1});
}

TEST_F(DesktopAlertsTest, theEscapeKeyAndClosingAreTheLast)
{
    ask();
    QTest::keyClick(box(), Qt::Key_Escape);
    EXPECT_TRUE(answered());
    EXPECT_EQ(answers, std::vector{1});
    answers.clear();
    ask();
    box()->close();
    EXPECT_TRUE(answered());
    EXPECT_EQ(answers, std::vector{1});
}
