#include "core/LaunchArguments.h"

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
QStringList words(const char *line)
{
    return QString::fromUtf8(line).split(QLatin1Char(' '));
}
const auto flag = QStringLiteral("--width");
} // namespace

TEST(LaunchArguments, aFlagIsThereOnlyAsAWholeWord)
{
    EXPECT_TRUE(LaunchArguments::has(flag, words("quillnest --other --width 5")));
    EXPECT_FALSE(LaunchArguments::has(flag, words("quillnest --widths 5")));
    EXPECT_FALSE(LaunchArguments::has(flag, words("quillnest --width=5")));
}

TEST(LaunchArguments, aValueIsWhatFollowsTheFirstFlag)
{
    EXPECT_EQ(LaunchArguments::value(flag, words("quillnest --width 5 --width 6")), QStringLiteral("5"));
    EXPECT_EQ(LaunchArguments::value(flag, words("quillnest --width --height")), QStringLiteral("--height"));
    EXPECT_EQ(LaunchArguments::value(flag, words("quillnest x --width")), std::nullopt);
    EXPECT_EQ(LaunchArguments::value(flag, words("quillnest")), std::nullopt);
}

TEST(LaunchArguments, aNumberThatIsNoneCountsAsAbsent)
{
    const auto number = [](const char *line) { return LaunchArguments::numericArgument(flag, words(line)); };
    EXPECT_EQ(number("quillnest --width 100"), 100.0);
    EXPECT_EQ(number("quillnest --width 99.5"), 99.5);
    EXPECT_EQ(number("quillnest --width -3"), -3.0);
    EXPECT_EQ(number("quillnest --width wide"), std::nullopt);
    EXPECT_EQ(number("quillnest --width 5px"), std::nullopt);
    EXPECT_EQ(number("quillnest --width"), std::nullopt);
    EXPECT_EQ(number("quillnest"), std::nullopt);
    // Nor are these, of which no size can be made.
    EXPECT_EQ(number("quillnest --width nan"), std::nullopt);
    EXPECT_EQ(number("quillnest --width inf"), std::nullopt);
    EXPECT_EQ(number("quillnest --width -inf"), std::nullopt);
    // The first flag counts, also when its value is no number.
    EXPECT_EQ(number("quillnest --width wide --width 5"), std::nullopt);
}

TEST(LaunchArguments, filesAreThePackagesThatBelongToNoFlag)
{
    const auto files = [](const char *line) {
        return LaunchArguments::files(words(line), QStringLiteral("/here")).join(QLatin1Char(' '));
    };
    EXPECT_EQ(files("quillnest /a/moon.apk sun.IPA ../up.apk"), QStringLiteral("/a/moon.apk /here/sun.IPA /up.apk"));
    EXPECT_EQ(files("quillnest --launch-apk a.apk --open-app b.apk --unknown c.apk"), QStringLiteral("/here/c.apk"));
    EXPECT_EQ(files("quillnest.apk notes.txt --moon.apk"), QString());
    EXPECT_EQ(files("quillnest"), QString());
}
