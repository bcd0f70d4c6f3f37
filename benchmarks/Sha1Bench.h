#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// The sum of a large file that is in memory already, against reading it.
Benchmark sha1Bench();

} // namespace quillnest::bench
