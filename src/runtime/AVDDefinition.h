#pragma once

#include "platform/HostProfile.h"
#include "runtime/AndroidRuntimePaths.h"

namespace quillnest
{

/// The definition of the managed Android Virtual Device: two plain text files in the format that the emulator reads.
namespace AVDDefinition
{
/// Writes "{name}.ini" and "{name}.avd/config.ini" below the AVD folder, each atomically; does nothing for an
/// installation without such a folder. Throws std::runtime_error with the file's path and the host's words.
/// Blocks for the disk; any thread.
void write(const AndroidRuntimePaths &paths, const HostProfile &profile);
} // namespace AVDDefinition

} // namespace quillnest
