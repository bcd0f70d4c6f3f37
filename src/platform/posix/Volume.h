#pragma once

#include <filesystem>

namespace quillnest
{

/// What a host's disks can do beyond what all systems agree on. Each host implements these.
namespace Volume
{
/// The two, on one volume, change places in one step. False where the volume can't do that in one step, with `isUnable`
/// set, or where the disk refuses.
bool exchange(const std::filesystem::path &first, const std::filesystem::path &second, bool &isUnable);

/// Waits until all that has been written on a folder's volume lies on the disk.
bool writeOut(const std::filesystem::path &folder);
} // namespace Volume

} // namespace quillnest
