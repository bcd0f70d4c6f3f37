#include "platform/desktop/FFmpegStillDecoder.h"
#include "stream/H264.h"

#include <gtest/gtest.h>

#include <QColor>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ostream>
#include <thread>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

using namespace quillnest;

namespace
{

/// How a stream's colours are written, and what it says of that.
struct Colours {
    const char *name;
    double red; ///< the share of red in the brightness
    double blue;
    bool full; ///< of the range of a byte, and not 16 to 235
    AVColorSpace space;
    AVColorRange range;
};

void PrintTo(const Colours &colours, std::ostream *stream)
{
    *stream << colours.name;
}

constexpr int patch = 32;
constexpr int columns = 4;
const std::array<QColor, 12> known{QColor(255, 0, 0),     QColor(0, 255, 0),   QColor(0, 0, 255),
                                   QColor(255, 255, 255), QColor(0, 0, 0),     QColor(128, 128, 128),
                                   QColor(255, 255, 0),   QColor(0, 255, 255), QColor(255, 0, 255),
                                   QColor(224, 172, 105), QColor(30, 60, 90),  QColor(244, 245, 248)};

/// One colour as brightness and two differences, each in a byte.
std::array<int, 3> written(const QColor &colour, const Colours &how)
{
    const double y = how.red * colour.redF() + (1 - how.red - how.blue) * colour.greenF() + how.blue * colour.blueF();
    const double blue = (colour.blueF() - y) / (2 * (1 - how.blue));
    const double red = (colour.redF() - y) / (2 * (1 - how.red));
    const auto byte = [](double value) { return std::clamp(static_cast<int>(std::lround(value)), 0, 255); };
    if (how.full)
        return {byte(255 * y), byte(128 + 255 * blue), byte(128 + 255 * red)};
    return {byte(16 + 219 * y), byte(128 + 224 * blue), byte(128 + 224 * red)};
}

struct Free {
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};

/// The known colours in patches, as a key frame that the program could have received.
VideoSample encode(const Colours &how)
{
    const auto *codec = avcodec_find_encoder_by_name("libx264");
    const std::unique_ptr<AVCodecContext, Free> context(avcodec_alloc_context3(codec));
    context->width = columns * patch;
    context->height = static_cast<int>(known.size()) / columns * patch;
    context->pix_fmt = AV_PIX_FMT_YUV420P;
    context->time_base = {1, 60};
    context->max_b_frames = 0;
    context->thread_count = 1;
    context->colorspace = how.space;
    context->color_range = how.range;
    av_opt_set(context->priv_data, "preset", "ultrafast", 0);
    av_opt_set(context->priv_data, "tune", "zerolatency", 0);
    av_opt_set(context->priv_data, "qp", "1", 0);
    av_opt_set(context->priv_data, "x264-params", "log=-1", 0);
    EXPECT_EQ(avcodec_open2(context.get(), codec, nullptr), 0);

    const std::unique_ptr<AVFrame, Free> frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = context->width;
    frame->height = context->height;
    frame->colorspace = how.space;
    frame->color_range = how.range;
    EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
    for (int plane = 0; plane < 3; ++plane) {
        const int shift = plane == 0 ? 0 : 1;
        for (int y = 0; y < frame->height >> shift; ++y) {
            for (int x = 0; x < frame->width >> shift; ++x) {
                const auto index = (y << shift) / patch * columns + (x << shift) / patch;
                frame->data[plane][y * frame->linesize[plane] + x] = static_cast<std::uint8_t>(
                    written(known.at(static_cast<std::size_t>(index)), how).at(static_cast<std::size_t>(plane)));
            }
        }
    }
    const std::unique_ptr<AVPacket, Free> packet(av_packet_alloc());
    EXPECT_EQ(avcodec_send_frame(context.get(), frame.get()), 0);
    EXPECT_EQ(avcodec_receive_packet(context.get(), packet.get()), 0);

    const std::vector<std::uint8_t> bytes(packet->data, packet->data + packet->size);
    const auto units = H264::nalUnits(bytes);
    const auto ofType = [&units](std::uint8_t type) {
        return *std::find_if(
            units.begin(), units.end(), [type](H264::Unit unit) { return !unit.empty() && H264::type(unit) == type; });
    };
    FFmpegVideoDecoding decoding;
    const auto format = H264::format(decoding, ofType(H264::sequenceParameterSet), ofType(H264::pictureParameterSet));
    EXPECT_TRUE(format);
    auto sample = H264::sampleBuffer(units, format);
    EXPECT_TRUE(sample);
    sample->keyFrame = true;
    return std::move(*sample);
}

void expectKnownColours(const QImage &picture, const char *what)
{
    ASSERT_FALSE(picture.isNull()) << what;
    const int side = picture.width() / columns;
    for (std::size_t i = 0; i < known.size(); ++i) {
        const auto index = static_cast<int>(i);
        const QColor shown(picture.pixel(index % columns * side + side / 2, index / columns * side + side / 2));
        const QColor &wanted = known.at(i);
        const int worst = std::max(
            {std::abs(shown.red() - wanted.red()), std::abs(shown.green() - wanted.green()),
             std::abs(shown.blue() - wanted.blue())});
        EXPECT_LE(worst, 3) << what << ": " << wanted.name().toStdString() << " is shown as "
                            << shown.name().toStdString();
    }
}

class VideoColoursTest : public ::testing::TestWithParam<Colours>
{
};

TEST_P(VideoColoursTest, aPictureHasTheColoursThatTheStreamSays)
{
    const auto sample = encode(GetParam());
    FFmpegVideoDecoding decoding;
    expectKnownColours(decoding.stillDecoder()->decode(sample), "still");

    const auto renderer = decoding.sampleRenderer();
    renderer->enqueue(sample);
    while (!renderer->latestFrame() && renderer->counters().failed == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const auto frame = renderer->latestFrame();
    ASSERT_TRUE(frame);
    expectKnownColours(frame->toImage(), "window");

    QImage larger(frame->size() * 3 / 2, QImage::Format_RGB32);
    frame->scaleTo(larger.bits(), larger.bytesPerLine(), larger.size());
    expectKnownColours(larger, "scaled");
}

constexpr double red601 = 0.299;
constexpr double blue601 = 0.114;
constexpr double red709 = 0.2126;
constexpr double blue709 = 0.0722;
constexpr double red2020 = 0.2627;
constexpr double blue2020 = 0.0593;

// A stream that says nothing is as a software encoder of Android's writes it.
INSTANTIATE_TEST_SUITE_P(
    , VideoColoursTest,
    ::testing::Values(
        Colours{"limited601", red601, blue601, false, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG},
        Colours{"limited601OfTheOtherName", red601, blue601, false, AVCOL_SPC_BT470BG, AVCOL_RANGE_MPEG},
        Colours{"limited709", red709, blue709, false, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG},
        Colours{"limited2020", red2020, blue2020, false, AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG},
        Colours{"full601", red601, blue601, true, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_JPEG},
        Colours{"full709", red709, blue709, true, AVCOL_SPC_BT709, AVCOL_RANGE_JPEG},
        Colours{"unsaid", red601, blue601, false, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED}),
    [](const auto &row) { return std::string(row.param.name); });

} // namespace
