#pragma once

#include "platform/Canvas.h"

namespace quillnest
{

/// Qt's rasterizer and its readers and writers of pictures. The reader of WebP comes as a plug-in of its own.
class QtDrawing : public Drawing
{
public:
    std::unique_ptr<Canvas> canvas(int width, int height) override;
    std::optional<Image> decode(std::span<const std::uint8_t> bytes) override;
    std::optional<std::vector<std::uint8_t>> encodePng(const Image &image) override;
};

} // namespace quillnest
