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
    // The first flag counts, also when its value is no number.
    EXPECT_EQ(number("quillnest --width wide --width 5"), std::nullopt);
}
