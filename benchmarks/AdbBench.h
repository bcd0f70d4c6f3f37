#pragma once

#include "benchmarks/Benchmark.h"

namespace quillnest::bench
{

/// What it costs to run a command on the device through `AndroidCommands`, against the cheapest way to run adb.
Benchmark adbBench();

} // namespace quillnest::bench
