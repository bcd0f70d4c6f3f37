#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// A package's label and icon, and its label alone, against what the platform's own tool takes to name them.
Benchmark iconBench();

/// Drawing a vector icon with gradients, its files at hand.
Benchmark vectorIconBench();

} // namespace quillnest::bench
