#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// Reading a package list of the usual size, against the XML library alone.
Benchmark packageListBench();

} // namespace quillnest::bench
