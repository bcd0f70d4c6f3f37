#pragma once

#include <cstddef>

namespace quillnest
{

/// What no part of a package that we have a use for reaches. A small archive can stand for gigabytes.
namespace PackageLimits
{
constexpr std::size_t largestEntry = 64 * 1024 * 1024;
/// The largest of real manifests stay below a mebibyte.
constexpr std::size_t largestManifest = 4 * 1024 * 1024;
} // namespace PackageLimits

} // namespace quillnest
