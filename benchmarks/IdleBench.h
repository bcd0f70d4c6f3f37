#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// What the program costs while it does nothing: memory with a library of 50 apps, and how often it wakes.
Benchmark idleBench();

} // namespace quillnest::bench
