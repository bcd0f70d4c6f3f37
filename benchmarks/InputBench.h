#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// How long a touch or a key takes from the toolkit to the control socket while the video runs.
Benchmark inputBench();

} // namespace quillnest::bench
