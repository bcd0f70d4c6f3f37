#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// A package's label and icon against the bare "unzip" commands that they take, one after the other, and against what
/// the platform's own tool takes to name them.
Benchmark iconBench();

/// Drawing a vector icon with gradients, its files at hand.
Benchmark vectorIconBench();

} // namespace quillnest::bench
