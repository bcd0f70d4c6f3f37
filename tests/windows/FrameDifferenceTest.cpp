#include "platform/desktop/FrameDifference.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

using namespace quillnest;

namespace
{

/// A planar 4:2:0 picture with rows that are longer than it is wide, as a decoder's are.
class Picture
{
public:
    Picture(int width, int height, std::uint8_t padding = 0) : m_frame(av_frame_alloc())
    {
        m_frame->format = AV_PIX_FMT_YUV420P;
        m_frame->width = width;
        m_frame->height = height;
        for (int plane = 0; plane < 3; ++plane) {
            auto &bytes = m_planes[plane];
            const int stride = columns(plane) + 13;
            bytes.assign(static_cast<std::size_t>(stride * rows(plane)), padding);
            m_frame->data[plane] = bytes.data();
            m_frame->linesize[plane] = stride;
            for (int y = 0; y < rows(plane); ++y)
                std::fill_n(&at(plane, 0, y), columns(plane), std::uint8_t{100});
        }
    }
    ~Picture() { av_frame_free(&m_frame); }
    Picture(const Picture &) = delete;
    Picture &operator=(const Picture &) = delete;

    int columns(int plane) const { return plane == 0 ? m_frame->width : (m_frame->width + 1) / 2; }
    int rows(int plane) const { return plane == 0 ? m_frame->height : (m_frame->height + 1) / 2; }
    std::uint8_t &at(int plane, int x, int y) { return m_frame->data[plane][y * m_frame->linesize[plane] + x]; }
    AVFrame &frame() { return *m_frame; }

private:
    AVFrame *m_frame;
    std::vector<std::uint8_t> m_planes[3];
};

std::vector<QRect> partsAfter(int width, int height, int plane, int x, int y)
{
    Picture before(width, height, 1);
    Picture after(width, height, 2);
    after.at(plane, x, y) = 101;
    return ffmpeg::differingParts(before.frame(), after.frame());
}

bool evenButAtTheEdges(const QRect &part, int width, int height)
{
    const int right = part.x() + part.width();
    const int bottom = part.y() + part.height();
    return part.x() % 2 == 0 && part.y() % 2 == 0 && (right % 2 == 0 || right == width)
        && (bottom % 2 == 0 || bottom == height);
}

} // namespace

TEST(FrameDifference, equalPicturesHaveNoParts)
{
    // What lies between the rows is nobody's picture.
    Picture before(64, 48, 1);
    Picture after(64, 48, 2);
    EXPECT_TRUE(ffmpeg::differingParts(before.frame(), after.frame()).empty());
}

TEST(FrameDifference, onePixelGivesItsBandAndItsColumns)
{
    struct Row {
        int plane;
        int x;
        int y;
        int top;
        int column;
    };
    const std::vector<Row> table{
        {0, 0, 0, 0, 0},     {0, 63, 47, 32, 63}, {0, 31, 15, 0, 31},  {0, 32, 16, 16, 32}, {0, 33, 31, 16, 33},
        {1, 0, 0, 0, 0},     {1, 31, 23, 32, 62}, {1, 10, 7, 0, 20},   {1, 10, 8, 16, 20},  {2, 0, 0, 0, 0},
        {2, 31, 23, 32, 62}, {2, 17, 15, 16, 34}, {2, 17, 16, 32, 34},
    };
    for (const auto &row : table) {
        const auto parts = partsAfter(64, 48, row.plane, row.x, row.y);
        ASSERT_EQ(parts.size(), 1U) << row.plane << ": " << row.x << "," << row.y;
        const auto &part = parts[0];
        EXPECT_EQ(part.y(), row.top);
        EXPECT_EQ(part.height(), 16);
        EXPECT_TRUE(part.contains(row.column, row.top)) << row.plane << ": " << row.x << "," << row.y;
        // A pixel doesn't cost the row: at most one step to each side, in pixels of its own plane.
        EXPECT_LE(part.width(), row.plane == 0 ? 32 : 64);
        EXPECT_TRUE(evenButAtTheEdges(part, 64, 48));
    }
}

TEST(FrameDifference, aPixelOfAWidePictureCostsOneStepOfColumns)
{
    for (const int x : {0, 500, 777, 1279}) {
        const auto parts = partsAfter(1280, 64, 0, x, 20);
        ASSERT_EQ(parts.size(), 1U);
        EXPECT_TRUE(parts[0].contains(x, 20));
        EXPECT_LE(parts[0].width(), 32);
    }
}

TEST(FrameDifference, theColumnsReachFromTheLeftmostToTheRightmostDifferenceOfABand)
{
    Picture before(640, 32);
    Picture after(640, 32);
    after.at(0, 100, 3) = 0;
    after.at(0, 500, 9) = 0;
    const auto parts = ffmpeg::differingParts(before.frame(), after.frame());
    ASSERT_EQ(parts.size(), 1U);
    EXPECT_TRUE(parts[0].contains(100, 3));
    EXPECT_TRUE(parts[0].contains(500, 9));
    EXPECT_GE(parts[0].x(), 100 - 16);
    EXPECT_LE(parts[0].x() + parts[0].width(), 500 + 17);
    EXPECT_EQ(parts[0].height(), 16);
}

TEST(FrameDifference, bandsApartAreTwoPartsAndBandsThatTouchAreOne)
{
    Picture before(64, 96);
    Picture after(64, 96);
    after.at(0, 5, 0) = 0;
    after.at(0, 5, 40) = 0;
    EXPECT_EQ(ffmpeg::differingParts(before.frame(), after.frame()).size(), 2U);
    after.at(0, 60, 20) = 0;
    const auto parts = ffmpeg::differingParts(before.frame(), after.frame());
    ASSERT_EQ(parts.size(), 1U);
    EXPECT_EQ(parts[0].height(), 48);
    EXPECT_TRUE(parts[0].contains(60, 20));
}

TEST(FrameDifference, aPictureThatDiffersEverywhereIsOnePart)
{
    for (const auto &[width, height] : {std::pair(64, 48), std::pair(61, 47), std::pair(2, 2), std::pair(1, 1)}) {
        Picture before(width, height);
        Picture after(width, height);
        for (int plane = 0; plane < 3; ++plane) {
            for (int y = 0; y < after.rows(plane); ++y)
                std::fill_n(&after.at(plane, 0, y), after.columns(plane), std::uint8_t{7});
        }
        EXPECT_EQ(
            ffmpeg::differingParts(before.frame(), after.frame()), std::vector<QRect>{QRect(0, 0, width, height)});
    }
}

TEST(FrameDifference, anotherSizeFormatOrColoursMeansTheWholePicture)
{
    const std::vector<QRect> whole{QRect(0, 0, 64, 48)};
    Picture before(62, 48);
    Picture after(64, 48);
    EXPECT_EQ(ffmpeg::differingParts(before.frame(), after.frame()), whole);
    Picture lower(64, 46);
    EXPECT_EQ(ffmpeg::differingParts(lower.frame(), after.frame()), whole);
    Picture fullRange(64, 48);
    fullRange.frame().color_range = AVCOL_RANGE_JPEG;
    EXPECT_EQ(ffmpeg::differingParts(fullRange.frame(), after.frame()), whole);
    Picture otherSpace(64, 48);
    otherSpace.frame().colorspace = AVCOL_SPC_BT709;
    EXPECT_EQ(ffmpeg::differingParts(otherSpace.frame(), after.frame()), whole);
    Picture otherFormat(64, 48);
    otherFormat.frame().format = AV_PIX_FMT_YUVJ420P;
    EXPECT_EQ(ffmpeg::differingParts(otherFormat.frame(), after.frame()), whole);
}

TEST(FrameDifference, thePartsCoverEveryPixelThatDiffersInPicturesOfAnySize)
{
    std::mt19937 random(20);
    const auto upTo = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    for (int round = 0; round < 2000; ++round) {
        const int width = 1 + upTo(90);
        const int height = 1 + upTo(70);
        Picture before(width, height, 1);
        Picture after(width, height, 2);
        for (int changes = upTo(6); changes > 0; --changes) {
            const int plane = upTo(3);
            after.at(plane, upTo(after.columns(plane)), upTo(after.rows(plane))) = static_cast<std::uint8_t>(upTo(256));
        }
        const auto parts = ffmpeg::differingParts(before.frame(), after.frame());
        const auto covered = [&parts](int x, int y) {
            return std::any_of(parts.begin(), parts.end(), [x, y](const QRect &part) { return part.contains(x, y); });
        };
        for (const auto &part : parts) {
            ASSERT_TRUE(QRect(0, 0, width, height).contains(part));
            ASSERT_TRUE(evenButAtTheEdges(part, width, height));
            // Every band of a part has a reason.
            for (int top = part.y(); top < part.y() + part.height(); top += 16) {
                bool reason = false;
                for (int y = top; y < std::min(top + 16, height); ++y) {
                    for (int x = 0; x < width; ++x)
                        reason = reason || before.at(0, x, y) != after.at(0, x, y)
                            || before.at(1, x / 2, y / 2) != after.at(1, x / 2, y / 2)
                            || before.at(2, x / 2, y / 2) != after.at(2, x / 2, y / 2);
                }
                ASSERT_TRUE(reason);
            }
        }
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const bool differs = before.at(0, x, y) != after.at(0, x, y)
                    || before.at(1, x / 2, y / 2) != after.at(1, x / 2, y / 2)
                    || before.at(2, x / 2, y / 2) != after.at(2, x / 2, y / 2);
                ASSERT_TRUE(!differs || covered(x, y)) << width << "x" << height << " at " << x << "," << y;
            }
        }
    }
}
