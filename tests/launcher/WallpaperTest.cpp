#include "launcher/wallpaper/Wallpaper.h"

#include "PanelFixture.h"
#include "launcher/wallpaper/WallpaperView.h"
#include "look/ChoiceButton.h"
#include "look/Palette.h"

#include <QImageReader>

using namespace quillnest;

namespace
{
class WallpaperTest : public PanelFixture
{
protected:
    QString file() const { return Wallpaper::customFile(fakes.platform.folders); }
    QString putPicture(const QColor &color)
    {
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(color);
        const auto path = fakes.path(QStringLiteral("picture.png"));
        image.save(path);
        return path;
    }
    bool choose(const QString &path)
    {
        fakes.filePanels->chosen = path.isEmpty() ? QList<QUrl>() : QList<QUrl>{QUrl::fromLocalFile(path)};
        std::optional<bool> answer;
        Wallpaper::chooseCustom(fakes.platform, [&answer](bool kept) { answer = kept; });
        fakes.settle();
        return answer.value();
    }
    QColor background() const { return inPoints(panel->grab()).pixelColor(5, 400); }
};

bool near(const QColor &a, const QColor &b, int distance)
{
    return std::abs(a.red() - b.red()) <= distance && std::abs(a.green() - b.green()) <= distance
        && std::abs(a.blue() - b.blue()) <= distance;
}

QColor darkened(const QColor &color, double veil)
{
    return QColor::fromRgbF(
        static_cast<float>(color.redF() * (1 - veil)), static_cast<float>(color.greenF() * (1 - veil)),
        static_cast<float>(color.blueF() * (1 - veil)));
}
} // namespace

TEST_F(WallpaperTest, thePresetsAreTheseFive)
{
    QStringList all;
    for (const auto &preset : Wallpaper::presets())
        all.append(preset.id + QLatin1Char(' ') + preset.name);
    EXPECT_EQ(
        all.join(u'|'), QStringLiteral("aurora Aurora|sunset Sunset|ocean Ocean|forest Forest|midnight Midnight"));
    constexpr float table[5][9]{
        {0.05F, 0.1F, 0.25F, 0.1F, 0.55F, 0.55F, 0.45F, 0.2F, 0.6F},
        {0.98F, 0.45F, 0.3F, 0.85F, 0.25F, 0.5F, 0.3F, 0.15F, 0.45F},
        {0.05F, 0.3F, 0.6F, 0.1F, 0.6F, 0.8F, 0.55F, 0.85F, 0.9F},
        {0.05F, 0.2F, 0.12F, 0.09F, 0.5F, 0.4F, 0.6F, 0.8F, 0.45F},
        {0.02F, 0.02F, 0.06F, 0.1F, 0.08F, 0.25F, 0.25F, 0.1F, 0.35F}};
    for (std::size_t i = 0; i < 15; ++i) {
        const auto *color = table[i / 3] + i % 3 * 3;
        EXPECT_EQ(Wallpaper::presets()[i / 3].colors[i % 3], QColor::fromRgbF(color[0], color[1], color[2])) << i;
    }
    EXPECT_EQ(Wallpaper::preset(QStringLiteral("none")), nullptr);
}

TEST_F(WallpaperTest, aPresetRunsThroughItsColoursFromCornerToCornerUnderTheVeil)
{
    const auto *preset = Wallpaper::preset(QStringLiteral("sunset"));
    const auto image = WallpaperView::render(fakes.platform, preset->id, QSize(200, 400));
    EXPECT_TRUE(near(image.pixelColor(0, 0), darkened(preset->colors[0], 0.35), 2));
    EXPECT_TRUE(near(image.pixelColor(100, 200), darkened(preset->colors[1], 0.15), 3));
    EXPECT_TRUE(near(image.pixelColor(199, 399), darkened(preset->colors[2], 0.45), 2));
}

TEST_F(WallpaperTest, aGradientHasNoSteps)
{
    // A slow one: each of its tones would be a band wider than a block, and neighbouring blocks would often be alike.
    const auto image = WallpaperView::render(fakes.platform, QStringLiteral("midnight"), QSize(780, 1520));
    constexpr int side = 8;
    int before = -1;
    for (int x = 0; x + side <= image.width() / 2; x += side) {
        int sum = 0;
        for (int i = 0; i < side * side; ++i)
            sum += qBlue(image.pixel(x + i % side, 400 + i / side));
        EXPECT_GT(sum, before) << x;
        before = sum;
    }
}

TEST_F(WallpaperTest, anUnknownOneIsTheVeilAlone)
{
    const auto image = WallpaperView::render(fakes.platform, QStringLiteral("nonsense"), QSize(10, 100));
    EXPECT_NEAR(image.pixelColor(5, 0).alphaF(), 0.35, 0.02);
    EXPECT_NEAR(image.pixelColor(5, 50).alphaF(), 0.15, 0.02);
    EXPECT_NEAR(image.pixelColor(5, 99).alphaF(), 0.45, 0.02);
    EXPECT_EQ(image.pixelColor(5, 50).lightness(), 0);
    const WallpaperView::Material glass{Qt::white, 0.5F};
    EXPECT_TRUE(WallpaperView::render(fakes.platform, QStringLiteral("nonsense"), QSize(10, 100), glass).isNull());
    set("QuillnestWallpaper", QStringLiteral("nonsense"));
    EXPECT_EQ(background(), Palette::light().windowBackground) << "the panel never shows it";
}

TEST_F(WallpaperTest, aPhotoIsKeptAsAJpegOfHighQualityUnderOneName)
{
    EXPECT_TRUE(file().endsWith(QStringLiteral("/Quillnest/wallpaper")));
    EXPECT_TRUE(choose(putPicture(Qt::red)));
    EXPECT_EQ(fakes.filePanels->opened.back().title, QStringLiteral("Choose a wallpaper"));
    EXPECT_FALSE(fakes.filePanels->opened.back().allowsSeveral);
    EXPECT_EQ(QImageReader(file()).format(), "jpeg");
    EXPECT_EQ(QImageReader(file()).size(), QSize(64, 48));
    EXPECT_TRUE(near(Wallpaper::image(fakes.platform, QStringLiteral("custom")).pixelColor(30, 20), Qt::red, 4));
    EXPECT_TRUE(choose(putPicture(Qt::blue)));
    EXPECT_TRUE(near(Wallpaper::image(fakes.platform, QStringLiteral("custom")).pixelColor(30, 20), Qt::blue, 4));
    EXPECT_EQ(QDir(QFileInfo(file()).path()).entryList({QStringLiteral("wallpaper*")}).size(), 1);
    EXPECT_TRUE(Wallpaper::image(fakes.platform, QStringLiteral("ocean")).isNull());
}

TEST_F(WallpaperTest, aPhotoFillsThePanelAndIsCutAlikeOnBothSides)
{
    // Bands of colour, so that the rows and columns that are left can be told.
    const auto banded = [this](QSize size, bool tall) {
        QImage image(size, QImage::Format_RGB32);
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x) {
                const int part = tall ? y * 3 / size.height() : x * 3 / size.width();
                image.setPixel(x, y, part == 0 ? qRgb(220, 0, 0) : part == 1 ? qRgb(0, 220, 0) : qRgb(0, 0, 220));
            }
        }
        const auto path = fakes.path(QStringLiteral("bands.png"));
        image.save(path);
        return path;
    };
    const auto isGreen = [](const QColor &color) { return color.green() > 3 * std::max(color.red(), color.blue()); };
    ASSERT_TRUE(choose(banded(QSize(120, 360), true)));
    auto image = WallpaperView::render(fakes.platform, QStringLiteral("custom"), QSize(120, 120));
    ASSERT_EQ(image.size(), QSize(120, 120));
    EXPECT_TRUE(isGreen(image.pixelColor(60, 3))) << "a tall one: the third in the middle";
    EXPECT_TRUE(isGreen(image.pixelColor(60, 116)));
    ASSERT_TRUE(choose(banded(QSize(360, 120), false)));
    image = WallpaperView::render(fakes.platform, QStringLiteral("custom"), QSize(120, 120));
    EXPECT_TRUE(isGreen(image.pixelColor(3, 60))) << "a wide one: the same";
    EXPECT_TRUE(isGreen(image.pixelColor(116, 60)));
}

TEST_F(WallpaperTest, whateverFailsLeavesThePhotoAsItWas)
{
    EXPECT_FALSE(choose({}));
    EXPECT_FALSE(QFileInfo::exists(file()));
    ASSERT_TRUE(choose(putPicture(Qt::red)));
    const auto before = fakes.readFile(file());
    EXPECT_FALSE(choose({}));
    EXPECT_FALSE(choose(fakes.writeFile(QStringLiteral("noise.png"), "no picture")));
    EXPECT_FALSE(choose(QStringLiteral("/nowhere.png")));
    EXPECT_EQ(fakes.readFile(file()), before);
}

TEST_F(WallpaperTest, aPhotoThatIsGoneLeavesThePlainBackground)
{
    set("QuillnestWallpaper", QStringLiteral("custom"));
    EXPECT_FALSE(Wallpaper::isSet(fakes.platform));
    EXPECT_EQ(background(), Palette::light().windowBackground);
    ASSERT_TRUE(choose(putPicture(Qt::red)));
    set("QuillnestWallpaperRevision", 1);
    EXPECT_TRUE(Wallpaper::isSet(fakes.platform));
    EXPECT_GT(background().red(), background().blue() + 20);
    ASSERT_TRUE(choose(putPicture(Qt::blue)));
    set("QuillnestWallpaperRevision", 2);
    EXPECT_GT(background().blue(), background().red() + 20) << "another revision is another photo";
    QFile::remove(file());
    set("QuillnestWallpaperRevision", 3);
    EXPECT_EQ(background(), Palette::light().windowBackground);
}

TEST_F(WallpaperTest, aPhotoThatCannotBeReadLeavesThePlainBackgroundWhateverIsWrongWithIt)
{
    QDir().mkpath(QFileInfo(file()).path());
    const auto put = [this](const QByteArray &bytes) {
        QFile photo(file());
        ASSERT_TRUE(photo.open(QIODevice::WriteOnly));
        photo.write(bytes);
        photo.close();
    };
    set("QuillnestWallpaper", QStringLiteral("custom"));
    put("no picture");
    set("QuillnestWallpaperRevision", 1);
    EXPECT_FALSE(Wallpaper::isSet(fakes.platform));
    EXPECT_EQ(background(), Palette::light().windowBackground);
    // A good beginning, and nothing after it.
    ASSERT_TRUE(choose(putPicture(Qt::red)));
    put(fakes.readFile(fakes.path(QStringLiteral("picture.png")))->first(40));
    set("QuillnestWallpaperRevision", 2);
    EXPECT_TRUE(Wallpaper::isSet(fakes.platform));
    EXPECT_EQ(background(), Palette::light().windowBackground);
}

TEST_F(WallpaperTest, aPhotoThatIsDeletedWhileItIsShownGoesWithoutATrace)
{
    ASSERT_TRUE(choose(putPicture(Qt::red)));
    set("QuillnestWallpaper", QStringLiteral("custom"));
    ASSERT_NE(background(), Palette::light().windowBackground);
    QFile::remove(file());
    panel->resize(400, 700);
    EXPECT_EQ(background(), Palette::light().windowBackground);
    panel->hide();
    panel->show();
    EXPECT_EQ(part<QLabel>()->palette().color(QPalette::WindowText), Palette::light().label);
    EXPECT_EQ(background(), Palette::light().windowBackground);
}

TEST_F(WallpaperTest, thePanelShowsAPresetAsSoonAsItIsChosenAndTextStaysReadable)
{
    for (const bool dark : {false, true}) {
        fakes.appearance->setDark(dark);
        for (const auto &preset : Wallpaper::presets()) {
            set("QuillnestWallpaper", preset.id);
            EXPECT_NE(background(), Palette::current(fakes.platform).windowBackground);
            const auto image = inPoints(panel->grab());
            const auto text = Palette::current(fakes.platform).label;
            for (int y = 10; y < 760; y += 50) {
                const auto luminance = [](const QColor &color) {
                    const auto linear = [](double part) {
                        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
                    };
                    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
                        + 0.0722 * linear(color.blueF());
                };
                const double a = luminance(text);
                const double b = luminance(image.pixelColor(4, y));
                EXPECT_GT((std::max(a, b) + 0.05) / (std::min(a, b) + 0.05), 4.5)
                    << preset.id.toStdString() << " dark " << dark << " at " << y;
            }
        }
    }
}

TEST_F(WallpaperTest, theSettingsOfferThemAndAPhotoCountsOnceItIsChosen)
{
    panel->setShowSettings(true);
    button(QStringLiteral("Ocean"))->click();
    EXPECT_EQ(Wallpaper::selected(fakes.platform), QStringLiteral("ocean"));
    fakes.filePanels->chosen = {};
    button(QStringLiteral("Choose a photo…"))->click();
    fakes.settle();
    EXPECT_EQ(Wallpaper::selected(fakes.platform), QStringLiteral("ocean"));
    EXPECT_TRUE(button(QStringLiteral("Ocean"))->isChecked());
    fakes.filePanels->chosen = {QUrl::fromLocalFile(putPicture(Qt::red))};
    button(QStringLiteral("Choose a photo…"))->click();
    fakes.settle();
    EXPECT_EQ(Wallpaper::selected(fakes.platform), QStringLiteral("custom"));
    EXPECT_EQ(fakes.settings->value(QStringLiteral("QuillnestWallpaperRevision")).toInt(), 1);
    ASSERT_NE(button(QStringLiteral("My photo")), nullptr);
    EXPECT_TRUE(button(QStringLiteral("My photo"))->isChecked());
    button(QStringLiteral("Pixel style"))->click();
    EXPECT_EQ(QuillnestTheme::style(*fakes.settings), ThemeStyle::pixel);
}
