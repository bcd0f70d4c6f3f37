#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// How long it takes from the start of the process until its status item is in the tray.
Benchmark startBench();

} // namespace quillnest::bench
