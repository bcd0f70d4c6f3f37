#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// What ten minutes of streaming leave behind.
Benchmark longStreamBench();

} // namespace quillnest::bench
