#pragma once

#include "benchmarks/BenchReport.h"

namespace quillnest::bench
{

/// What a picture costs on its way from the socket to the screen, against FFmpeg decoding the same stream.
void benchVideoPath(BenchReport &report);

} // namespace quillnest::bench
