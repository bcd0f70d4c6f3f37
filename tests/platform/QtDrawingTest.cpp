#include "platform/desktop/QtDrawing.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QLoggingCategory>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <random>

using namespace quillnest;

namespace
{
using Blob = std::vector<std::uint8_t>;

Blob blob(const QByteArray &bytes)
{
    return {bytes.begin(), bytes.end()};
}

Blob encoded(const QImage &image, const char *format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    // WebP without loss.
    writer.setQuality(100);
    EXPECT_TRUE(writer.write(image)) << format;
    return blob(bytes);
}

QImage leftRedRightBlue(QImage::Format format)
{
    QImage image(40, 20, QImage::Format_ARGB32);
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 40; ++x)
            image.setPixel(x, y, x < 20 ? qRgb(255, 0, 0) : qRgb(0, 0, 255));
    }
    return image.convertToFormat(format);
}

std::uint32_t at(const Image &image, int x, int y)
{
    return image.pixels.at(static_cast<std::size_t>(y * image.width + x));
}

class QtDrawingTest : public ::testing::Test
{
protected:
    /// What ImageMagick makes of its arguments; `name` is the file with the ending of its format.
    Blob made(QStringList arguments, const char *name)
    {
        const auto path = home.filePath(QString::fromLatin1(name));
        QProcess convert;
        convert.start(QStringLiteral("convert"), arguments << path);
        EXPECT_TRUE(convert.waitForFinished() && convert.exitCode() == 0)
            << convert.readAllStandardError().toStdString();
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return blob(file.readAll());
    }

    // The readers tell at length what is wrong with a broken picture.
    QtDrawingTest() { QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio.*=false")); }
    ~QtDrawingTest() override { QLoggingCategory::setFilterRules({}); }

    QTemporaryDir home;
    QtDrawing drawing;
};
} // namespace

TEST_F(QtDrawingTest, picturesOfEachFormatAreRead)
{
    for (const auto *format : {"png", "jpeg", "webp"}) {
        const auto image = drawing.decode(encoded(leftRedRightBlue(QImage::Format_RGB32), format));
        ASSERT_TRUE(image) << format;
        EXPECT_EQ(image->width, 40) << format;
        EXPECT_EQ(image->height, 20) << format;
        ASSERT_EQ(image->pixels.size(), 800U) << format;
        const auto red = at(*image, 3, 3);
        EXPECT_EQ(red >> 24, 255U) << format;
        EXPECT_GT(red >> 16 & 0xFF, 250U) << format;
        EXPECT_LT(red & 0xFF, 5U) << format;
        EXPECT_GT(at(*image, 36, 16) & 0xFF, 250U) << format;
    }
}

TEST_F(QtDrawingTest, rowsComeFromTheTop)
{
    QImage picture(2, 2, QImage::Format_ARGB32);
    picture.setPixel(0, 0, 0xFF112233);
    picture.setPixel(1, 0, 0xFF445566);
    picture.setPixel(0, 1, 0xFF778899);
    picture.setPixel(1, 1, 0xFFAABBCC);
    const auto image = drawing.decode(encoded(picture, "png"));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->pixels, (std::vector<std::uint32_t>{0xFF112233, 0xFF445566, 0xFF778899, 0xFFAABBCC}));
}

TEST_F(QtDrawingTest, coloursArePremultiplied)
{
    QImage picture(2, 1, QImage::Format_ARGB32);
    picture.setPixel(0, 0, 0x80FF0000);
    picture.setPixel(1, 0, 0x00FF0000);
    for (const auto *format : {"png", "webp"}) {
        const auto image = drawing.decode(encoded(picture, format));
        ASSERT_TRUE(image) << format;
        EXPECT_EQ(image->pixels, (std::vector<std::uint32_t>{0x80800000, 0})) << format;
    }
}

TEST_F(QtDrawingTest, everyKindOfPngAndJpegIsRead)
{
    const QStringList picture{QStringLiteral("-size"), QStringLiteral("30x20"), QStringLiteral("gradient:red-blue")};
    const auto half = QStringList(picture)
        << QStringLiteral("-alpha") << QStringLiteral("set") << QStringLiteral("-channel") << QStringLiteral("A")
        << QStringLiteral("-evaluate") << QStringLiteral("set") << QStringLiteral("50%") << QStringLiteral("+channel");
    const auto with = [](QStringList list, std::initializer_list<const char *> more) {
        for (const auto *word : more)
            list << QString::fromLatin1(word);
        return list;
    };
    const struct {
        const char *name;
        QStringList arguments;
        unsigned alpha;
    } pictures[] = {
        {"sixteen.png", with(half, {"-depth", "16", "-define", "png:bit-depth=16"}), 128},
        {"grey-alpha.png", with(half, {"-colorspace", "gray", "-define", "png:color-type=4"}), 128},
        {"grey.png", with(picture, {"-colorspace", "gray", "-define", "png:color-type=0"}), 255},
        {"bits.png", with(picture, {"-monochrome", "-define", "png:bit-depth=1"}), 255},
        {"interlaced.png", with(picture, {"-interlace", "PNG"}), 255},
        {"cmyk.jpg", with(picture, {"-colorspace", "CMYK"}), 255},
        {"grey.jpg", with(picture, {"-colorspace", "gray"}), 255},
        {"progressive.jpg", with(picture, {"-interlace", "JPEG"}), 255},
        {"lossy.webp", with(half, {"-quality", "60"}), 128},
    };
    for (const auto &[name, arguments, alpha] : pictures) {
        const auto image = drawing.decode(made(arguments, name));
        ASSERT_TRUE(image) << name;
        EXPECT_EQ(image->width, 30) << name;
        EXPECT_EQ(image->height, 20) << name;
        EXPECT_NEAR(at(*image, 15, 1) >> 24, alpha, 2) << name;
    }
    QImage palette(30, 20, QImage::Format_Indexed8);
    palette.setColorTable({0x80FF0000, 0xFF0000FF});
    palette.fill(0);
    const auto translucent = drawing.decode(encoded(palette, "png"));
    ASSERT_TRUE(translucent);
    EXPECT_EQ(at(*translucent, 15, 1), 0x80800000U);
    const auto cmyk = drawing.decode(made(with(picture, {"-colorspace", "CMYK"}), "cmyk.jpg"));
    EXPECT_GT(at(*cmyk, 15, 1) >> 16 & 0xFF, 150U);
    EXPECT_LT(at(*cmyk, 15, 1) & 0xFF, 100U);
}

TEST_F(QtDrawingTest, aPictureIsNotTurnedByItsMetadata)
{
    auto bytes = encoded(leftRedRightBlue(QImage::Format_RGB32), "jpeg");
    // "Turn me by a quarter", right behind the start of the file.
    const Blob orientation{0xFF, 0xE1, 0,    34,   'E', 'x', 'i', 'f', 0, 0, 'M', 'M', 0, 42, 0, 0, 0, 8,
                           0,    1,    0x01, 0x12, 0,   3,   0,   0,   0, 1, 0,   6,   0, 0,  0, 0, 0, 0};
    bytes.insert(bytes.begin() + 2, orientation.begin(), orientation.end());
    QByteArray copy(reinterpret_cast<const char *>(bytes.data()), static_cast<qsizetype>(bytes.size()));
    QBuffer buffer(&copy);
    buffer.open(QIODevice::ReadOnly);
    ASSERT_EQ(QImageReader(&buffer).transformation(), QImageIOHandler::TransformationRotate90);
    const auto image = drawing.decode(bytes);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width, 40);
}

TEST_F(QtDrawingTest, otherFormatsAreRefused)
{
    const auto picture = leftRedRightBlue(QImage::Format_RGB32);
    for (const auto *format : {"bmp", "ppm", "xbm"})
        EXPECT_FALSE(drawing.decode(encoded(picture, format))) << format;
    EXPECT_FALSE(drawing.decode(blob("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>")));
    EXPECT_FALSE(drawing.decode(blob("GIF89a")));
    EXPECT_FALSE(drawing.decode({}));
}

TEST_F(QtDrawingTest, brokenPicturesAreAbsentOrWhatIsThereOfThem)
{
    QImage picture(64, 64, QImage::Format_ARGB32);
    std::mt19937 random(3);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x)
            picture.setPixel(x, y, static_cast<QRgb>(random()));
    }
    for (const auto *format : {"png", "jpeg", "webp"}) {
        const auto whole = encoded(picture, format);
        for (std::size_t length = 0; length < whole.size(); length += std::max<std::size_t>(1, whole.size() / 199)) {
            const auto image = drawing.decode(std::span(whole).first(length));
            if (image) {
                EXPECT_EQ(image->pixels.size(), 64U * 64U) << format << length;
            }
        }
        EXPECT_FALSE(drawing.decode(std::span(whole).first(20))) << format;
        for (int round = 0; round < 300; ++round) {
            auto damaged = whole;
            for (int i = 0; i < 4; ++i)
                damaged[12 + random() % (damaged.size() - 12)] = static_cast<std::uint8_t>(random());
            const auto image = drawing.decode(damaged);
            if (image) {
                EXPECT_EQ(
                    image->pixels.size(),
                    static_cast<std::size_t>(image->width) * static_cast<std::size_t>(image->height));
            }
        }
    }
    const auto png = encoded(picture, "png");
    EXPECT_FALSE(drawing.decode(std::span(png).first(png.size() / 2)));
    const auto webp = encoded(picture, "webp");
    EXPECT_FALSE(drawing.decode(std::span(webp).first(webp.size() / 2)));
}

TEST_F(QtDrawingTest, aPictureIsRefusedByItsHeadIfItIsTooLarge)
{
    // The greatest one that is read, which icons do come in, and one that is larger by a row.
    static_assert(Drawing::largestPicture >= 4096 * 4096);
    constexpr int rows = static_cast<int>(Drawing::largestPicture / 4096);
    QImage picture(4096, rows, QImage::Format_Grayscale8);
    picture.fill(0x55);
    const auto greatest = drawing.decode(encoded(picture, "png"));
    ASSERT_TRUE(greatest);
    EXPECT_EQ(static_cast<std::int64_t>(greatest->pixels.size()), Drawing::largestPicture);
    picture = QImage(4096, rows + 1, QImage::Format_Grayscale8);
    picture.fill(0x55);
    EXPECT_FALSE(drawing.decode(encoded(picture, "png")));
    EXPECT_FALSE(drawing.decode(encoded(picture, "jpeg")));

    // A head alone that claims to be enormous.
    QImage small(4, 4, QImage::Format_RGB32);
    small.fill(Qt::red);
    auto png = encoded(small, "png");
    png[16] = png[20] = 0x7F;
    EXPECT_FALSE(drawing.decode(png));
}

TEST_F(QtDrawingTest, aPictureComesBackFromItsPng)
{
    Image image{33, 17, {}};
    std::mt19937 random(5);
    for (int i = 0; i < 33 * 17; ++i) {
        const auto alpha = static_cast<std::uint32_t>(random() % 256);
        const auto part = [&] { return static_cast<std::uint32_t>(random() % (alpha + 1)); };
        image.pixels.push_back(alpha << 24 | part() << 16 | part() << 8 | part());
    }
    const auto png = drawing.encodePng(image);
    ASSERT_TRUE(png);
    EXPECT_EQ(std::string(png->begin() + 1, png->begin() + 4), "PNG");
    const auto back = drawing.decode(*png);
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, image);
}

TEST_F(QtDrawingTest, anEmptyPictureHasNoPng)
{
    EXPECT_FALSE(drawing.encodePng({}));
    EXPECT_FALSE(drawing.encodePng({2, 2, {0xFF000000}}));
    EXPECT_FALSE(drawing.encodePng({-1, -1, {0xFF000000}}));
}
