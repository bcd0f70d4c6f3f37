#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// One, four and nine windows at once.
Benchmark windowsBench();

} // namespace quillnest::bench
