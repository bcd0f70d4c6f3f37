#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// How old a picture is when it is handed to the display.
Benchmark frameAgeBench();

} // namespace quillnest::bench
