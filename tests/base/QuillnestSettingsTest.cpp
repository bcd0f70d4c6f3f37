#include "base/QuillnestSettings.h"
#include "base/QuillnestLayout.h"
#include "fakes/MemorySettings.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace quillnest;

namespace
{
const auto key = QStringLiteral("Quillnest.test");
const auto width = QStringLiteral("Quillnest.panelWidth");
const auto height = QStringLiteral("Quillnest.panelHeight");
} // namespace

TEST(QuillnestSettings, aFlagOfAnotherTypeCountsAsAbsent)
{
    MemorySettings settings;
    for (const QVariant &value :
         {QVariant(), QVariant(1), QVariant(0.0), QVariant(QStringLiteral("true")), QVariant(QVariantList{true})}) {
        settings.setValue(key, value);
        EXPECT_TRUE(QuillnestSettings::flag(settings, key, true));
        EXPECT_FALSE(QuillnestSettings::flag(settings, key, false));
    }
    settings.setValue(key, false);
    EXPECT_FALSE(QuillnestSettings::flag(settings, key, true));
    settings.setValue(key, true);
    EXPECT_TRUE(QuillnestSettings::flag(settings, key, false));
}

TEST(QuillnestSettings, removingAKeyRestoresItsDefault)
{
    MemorySettings settings;
    settings.setValue(key, false);
    settings.remove(key);
    EXPECT_TRUE(QuillnestSettings::flag(settings, key, true));
    EXPECT_TRUE(settings.keys().isEmpty());
}

TEST(QuillnestSettings, numbersAndTextsHaveTheirDefaults)
{
    MemorySettings settings;
    EXPECT_EQ(QuillnestSettings::number(settings, key, 5), 5);
    EXPECT_EQ(QuillnestSettings::integer(settings, key, 3), 3);
    EXPECT_EQ(QuillnestSettings::text(settings, key, QStringLiteral("none")), QStringLiteral("none"));
    settings.setValue(key, true);
    EXPECT_EQ(QuillnestSettings::number(settings, key, 5), 5);
    EXPECT_EQ(QuillnestSettings::text(settings, key, QStringLiteral("none")), QStringLiteral("none"));
    settings.setValue(key, qint64{7});
    EXPECT_EQ(QuillnestSettings::number(settings, key, 5), 7);
    EXPECT_EQ(QuillnestSettings::integer(settings, key, 3), 7);
    settings.setValue(key, 1e300);
    EXPECT_EQ(QuillnestSettings::integer(settings, key, 3), 3);
    settings.setValue(key, std::nan(""));
    EXPECT_EQ(QuillnestSettings::integer(settings, key, 3), 3);
}

TEST(QuillnestLayout, theSizeNeedsBothValuesAtTheirMinimum)
{
    MemorySettings settings;
    const auto size = [&settings](const QVariant &w, const QVariant &h) {
        settings.setValue(width, w);
        settings.setValue(height, h);
        return QuillnestLayout::size(settings);
    };
    const QSizeF standard(390, 760);
    EXPECT_EQ(QuillnestLayout::size(settings), standard);
    EXPECT_EQ(size(279.0, 800.0), standard);
    EXPECT_EQ(size(500.0, 419.0), standard);
    EXPECT_EQ(size(280.0, 420.0), QSizeF(280, 420));
    EXPECT_EQ(size(QStringLiteral("500"), 800.0), standard);
    EXPECT_EQ(size(std::nan(""), 800.0), standard);
}

TEST(QuillnestLayout, savedValuesAreRounded)
{
    MemorySettings settings;
    QuillnestLayout::setSize(settings, QSizeF(500.4, 600.5));
    EXPECT_EQ(QuillnestLayout::size(settings), QSizeF(500, 601));
}

TEST(QuillnestLayout, presetsHaveLabels)
{
    EXPECT_EQ(QuillnestLayout::presets[0].label(), QStringLiteral("Widget — 320 × 420"));
    EXPECT_EQ(QuillnestLayout::presets[6].label(), QStringLiteral("Extra Large — 440 × 920"));
}
