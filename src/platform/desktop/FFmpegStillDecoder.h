#pragma once

#include "platform/SampleRenderer.h"

namespace quillnest
{

/// Decodes one key frame with a decoder that is made and thrown away for it.
class FFmpegStillDecoder : public StillDecoder
{
public:
    QImage decode(const VideoSample &keyFrame) const override;
};

/// FFmpeg's decoder for both renderers and stills.
class FFmpegVideoDecoding : public VideoDecoding
{
public:
    std::shared_ptr<SampleRenderer> sampleRenderer() override;
    std::shared_ptr<StillDecoder> stillDecoder() override;
    bool accepts(const VideoFormat &format) const override;
};

} // namespace quillnest
