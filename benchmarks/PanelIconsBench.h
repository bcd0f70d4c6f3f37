#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// A panel of 200 apps whose icons come, out of the packages and out of the files that were kept.
Benchmark panelIconsBench();

} // namespace quillnest::bench
