#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// From a click on an installed app to its first picture, less what a client without a window would take.
Benchmark launchBench();

} // namespace quillnest::bench
