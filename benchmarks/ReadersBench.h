#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// The readers of compiled XML and of resource tables on the largest files of the platform's own package, against
/// reading the same bytes once from memory.
Benchmark readersBench();

} // namespace quillnest::bench
