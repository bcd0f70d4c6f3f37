#include "launcher/GreetingHeader.h"

#include "PanelFixture.h"

using namespace quillnest;
using namespace std::chrono_literals;

TEST(GreetingHeader, greetsByTheHour)
{
    for (int hour = 0; hour < 24; ++hour) {
        const auto expected = hour >= 5 && hour <= 11 ? "Good morning"
            : hour >= 12 && hour <= 16                ? "Good afternoon"
            : hour >= 17 && hour <= 21                ? "Good evening"
                                                      : "Good night";
        EXPECT_EQ(GreetingHeader::greeting(QTime(hour, 0)), QLatin1String(expected)) << hour;
        EXPECT_EQ(GreetingHeader::greeting(QTime(hour, 59)), QLatin1String(expected)) << hour;
    }
    EXPECT_EQ(GreetingHeader::greeting(QTime(22, 0)), QStringLiteral("Good night"));
    EXPECT_EQ(GreetingHeader::greeting(QTime(4, 59)), QStringLiteral("Good night"));
    EXPECT_EQ(GreetingHeader::greeting(QTime(5, 0)), QStringLiteral("Good morning"));
}

TEST(GreetingHeader, eachStyleHasItsTwoLines)
{
    const QDateTime time(QDate(2026, 3, 5), QTime(18, 7));
    const QLocale locale(QLocale::English, QLocale::UnitedKingdom);
    const auto expect = [&](ThemeStyle style, const char *first, int size, QFont::Weight weight, const char *second,
                            int secondSize, QFont::Weight secondWeight) {
        const auto lines = GreetingHeader::lines(style, time, locale);
        EXPECT_EQ(lines.first.text, QLatin1String(first));
        EXPECT_EQ(lines.first.font.pixelSize(), size);
        EXPECT_EQ(lines.first.font.weight(), weight);
        EXPECT_EQ(lines.second.text, QLatin1String(second));
        EXPECT_EQ(lines.second.font.pixelSize(), secondSize);
        EXPECT_EQ(lines.second.font.weight(), secondWeight);
    };
    expect(ThemeStyle::classic, "Good evening", 24, QFont::DemiBold, "Thursday, 5 March", 12, QFont::Normal);
    expect(ThemeStyle::oneui, "18:07", 34, QFont::Light, "Thursday, 5 March", 13, QFont::Normal);
    expect(ThemeStyle::ios, "Thursday", 13, QFont::DemiBold, "5 March", 30, QFont::Bold);
    expect(ThemeStyle::pixel, "Thu, 5 Mar", 13, QFont::Normal, "Good evening", 22, QFont::Normal);
}

TEST(GreetingHeader, datesAreWrittenAsTheLanguageWritesThem)
{
    const QDateTime time(QDate(2026, 11, 21), QTime(18, 7, 5));
    const auto expect = [&](const QLocale &locale, const char *wide, const char *day, const char *brief) {
        const auto text = [&](ThemeStyle style) { return GreetingHeader::lines(style, time, locale); };
        EXPECT_EQ(text(ThemeStyle::classic).second.text, QString::fromUtf8(wide));
        EXPECT_EQ(text(ThemeStyle::oneui).second.text, QString::fromUtf8(wide));
        EXPECT_EQ(text(ThemeStyle::ios).second.text, QString::fromUtf8(day));
        EXPECT_EQ(text(ThemeStyle::pixel).first.text, QString::fromUtf8(brief));
    };
    expect(QLocale(u"de_DE"), "Samstag, 21. November", "21. November", "Sa., 21. Nov.");
    expect(QLocale(u"en_US"), "Saturday, November 21", "November 21", "Sat, Nov 21");
    expect(QLocale(u"es_ES"), "sábado, 21 de noviembre", "21 de noviembre", "sáb, 21 de nov");
    expect(QLocale(u"ru_RU"), "суббота, 21 ноября", "21 ноября", "сб, 21 нояб.");
    expect(QLocale(u"ja_JP"), "11月21日土曜日", "11月21日", "11月21日土");
    expect(QLocale(u"hu_HU"), "november 21., szombat", "november 21.", "nov. 21., Szo");
    expect(QLocale::c(), "Saturday, 21 November", "21 November", "Sat, 21 Nov");
}

TEST(GreetingHeader, theClockHasNoSecondsInAnyLanguage)
{
    const QDateTime time(QDate(2026, 11, 21), QTime(18, 7, 5));
    const auto clock
        = [&](const QLocale &locale) { return GreetingHeader::lines(ThemeStyle::oneui, time, locale).first.text; };
    EXPECT_EQ(clock(QLocale::c()), QStringLiteral("18:07"));
    EXPECT_EQ(clock(QLocale(u"de_DE")), QStringLiteral("18:07"));
    EXPECT_EQ(clock(QLocale(u"fi_FI")), QStringLiteral("18.07"));
    EXPECT_TRUE(clock(QLocale(u"en_US")).startsWith(QStringLiteral("6:07")));
}

namespace
{
class GreetingHeaderTest : public PanelFixture
{
};
} // namespace

TEST_F(GreetingHeaderTest, followsTheMinuteWhileItCanBeSeen)
{
    fakes.clock->setWallTime(QDateTime(QDate(2026, 3, 5), QTime(11, 58, 40)).toUTC());
    panel->hide();
    panel->show();
    const auto *header = part<GreetingHeader>();
    const auto said = [header] { return header->accessibleName().section(QLatin1Char(','), 0, 0); };
    EXPECT_EQ(said(), QStringLiteral("Good morning"));
    fakes.clock->advance(79s);
    EXPECT_EQ(said(), QStringLiteral("Good morning"));
    fakes.clock->advance(1s);
    EXPECT_EQ(said(), QStringLiteral("Good afternoon"));
    fakes.clock->advance(5h);
    EXPECT_EQ(said(), QStringLiteral("Good evening"));
    panel->hide();
    fakes.clock->advance(6h);
    EXPECT_EQ(said(), QStringLiteral("Good evening")) << "unseen it costs nothing";
    panel->show();
    EXPECT_EQ(said(), QStringLiteral("Good night"));
}
