#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// What twenty openings and closings leave behind.
Benchmark openingsBench();

} // namespace quillnest::bench
