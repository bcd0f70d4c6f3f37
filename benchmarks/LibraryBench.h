#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// The library's lists with 10,000 apps.
Benchmark libraryBench();

} // namespace quillnest::bench
