#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// A large download from the loopback address into a file, against a bare copy from socket to file.
Benchmark downloadBench();

} // namespace quillnest::bench
