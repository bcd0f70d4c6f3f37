#include "base/Setting.h"

#include "fakes/MemorySettings.h"

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
constexpr Setting<bool> flag{"Some.flag", true, "a flag"};
constexpr Setting<double> minutes{"Some.minutes", 5, "some minutes"};
constexpr Setting<qint64> level{"Some.level", 35, "a level"};
constexpr Setting<QString> name{"Some.name", "classic", "a name"};
constexpr SettingRecord library{"Some.library", "data", "a library"};
constexpr SettingFamily windows{"Some.window.", "record", "a window"};
} // namespace

TEST(Setting, anAbsentKeyHasTheDefaultAndIsNotWrittenByReading)
{
    const MemorySettings settings;
    EXPECT_TRUE(flag.value(settings));
    EXPECT_EQ(minutes.value(settings), 5);
    EXPECT_EQ(level.value(settings), 35);
    EXPECT_EQ(name.value(settings), QStringLiteral("classic"));
    EXPECT_TRUE(settings.keys().isEmpty());
}

TEST(Setting, whatIsSetIsReadUntilItIsRemoved)
{
    MemorySettings settings;
    flag.set(settings, false);
    minutes.set(settings, 0.5);
    level.set(settings, 30);
    name.set(settings, QStringLiteral("ios"));
    EXPECT_FALSE(flag.value(settings));
    EXPECT_EQ(minutes.value(settings), 0.5);
    EXPECT_EQ(level.value(settings), 30);
    EXPECT_EQ(name.value(settings), QStringLiteral("ios"));
    EXPECT_EQ(settings.value(QStringLiteral("Some.level")), QVariant(qint64{30}));
    settings.remove(level.key());
    EXPECT_EQ(level.value(settings), 35);
}

TEST(Setting, aValueOfAnotherTypeCountsAsAbsent)
{
    MemorySettings settings;
    settings.setValue(flag.key(), 0);
    settings.setValue(minutes.key(), true);
    settings.setValue(level.key(), QStringLiteral("30"));
    settings.setValue(name.key(), 7);
    EXPECT_TRUE(flag.value(settings));
    EXPECT_EQ(minutes.value(settings), 5);
    EXPECT_EQ(level.value(settings), 35);
    EXPECT_EQ(name.value(settings), QStringLiteral("classic"));
}

TEST(Setting, declarationsTellWhatThereIsInTheirOrder)
{
    const auto all = declarations(flag, minutes, level, name, library, windows);
    ASSERT_EQ(all.size(), 6);
    QStringList types;
    for (const auto &setting : all)
        types.append(setting.type);
    EXPECT_EQ(types.join(u' '), QStringLiteral("boolean number integer text data record"));
    EXPECT_EQ(all[0].key, QStringLiteral("Some.flag"));
    EXPECT_EQ(all[0].meaning, QStringLiteral("a flag"));
    EXPECT_EQ(all[0].defaultValue, QVariant(true));
    EXPECT_EQ(all[3].defaultValue, QVariant(QStringLiteral("classic")));
    EXPECT_FALSE(all[4].defaultValue.isValid());
    EXPECT_FALSE(all[4].isFamily);
    EXPECT_TRUE(all[5].isFamily);
    EXPECT_EQ(windows.key(QStringLiteral("org.example")), QStringLiteral("Some.window.org.example"));
}
