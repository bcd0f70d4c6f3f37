#pragma once

#include <QRect>

#include <vector>

struct AVFrame;

namespace quillnest::ffmpeg
{

/// The parts in which two planar 4:2:0 pictures differ: for each run of bands of 16 rows with a difference, the columns
/// between the leftmost and the rightmost one. Sides are even but at the picture's own edges. The whole picture when
/// size, format or colours are others.
///
/// Bands that are alike cost one comparison of their bytes; a picture that differs everywhere costs next to nothing,
/// because each band is left as soon as both of its ends are known to differ.
std::vector<QRect> differingParts(const AVFrame &before, const AVFrame &after);

} // namespace quillnest::ffmpeg
