#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// What a picture costs on its way from the socket to the screen, against FFmpeg decoding the same stream.
Benchmark videoPathBench();

/// The same with a display of the size that today's phones have.
Benchmark largeVideoPathBench();

} // namespace quillnest::bench
