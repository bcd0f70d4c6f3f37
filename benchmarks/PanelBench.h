#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// A panel of 500 apps whose icons are there: how long until it is painted, and the longest that it keeps the main
/// thread while its user scrolls and searches.
Benchmark panelBench();

} // namespace quillnest::bench
