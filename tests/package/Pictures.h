#pragma once

#include "platform/Image.h"

#include <algorithm>
#include <cstdlib>

/// Comparing pictures.
namespace quillnest::pictures
{

struct Difference {
    /// Of any channel of any pixel, from 0 to 255; 255 where the sizes differ.
    int greatest = 0;
    /// Over all channels of all pixels.
    double mean = 0;
};

inline Difference difference(const Image &a, const Image &b)
{
    if (a.width != b.width || a.height != b.height)
        return {255, 255};
    Difference result;
    double sum = 0;
    for (std::size_t i = 0; i < a.pixels.size(); ++i) {
        for (int shift = 0; shift < 32; shift += 8) {
            const int apart = std::abs(
                static_cast<int>((a.pixels[i] >> shift) & 0xFF) - static_cast<int>((b.pixels[i] >> shift) & 0xFF));
            result.greatest = std::max(result.greatest, apart);
            sum += apart;
        }
    }
    result.mean = sum / (4.0 * static_cast<double>(a.pixels.size()));
    return result;
}

/// A picture of half, a third … of the size, each pixel the mean of those that it stands for.
inline Image reduced(const Image &image, int factor)
{
    Image result{image.width / factor, image.height / factor, {}};
    for (int y = 0; y < result.height; ++y) {
        for (int x = 0; x < result.width; ++x) {
            std::uint32_t sums[4]{};
            for (int i = 0; i < factor * factor; ++i) {
                const auto row = static_cast<std::size_t>(y * factor + i / factor);
                const auto pixel = image.pixels
                                       [row * static_cast<std::size_t>(image.width)
                                        + static_cast<std::size_t>(x * factor + i % factor)];
                for (int channel = 0; channel < 4; ++channel)
                    sums[channel] += (pixel >> (8 * channel)) & 0xFF;
            }
            std::uint32_t mean = 0;
            const auto count = static_cast<std::uint32_t>(factor * factor);
            for (int channel = 0; channel < 4; ++channel)
                mean |= ((sums[channel] + count / 2) / count) << (8 * channel);
            result.pixels.push_back(mean);
        }
    }
    return result;
}

/// How many pixels aren't wholly transparent.
inline int painted(const Image &image)
{
    return static_cast<int>(
        std::count_if(image.pixels.begin(), image.pixels.end(), [](std::uint32_t pixel) { return pixel >> 24; }));
}

} // namespace quillnest::pictures
