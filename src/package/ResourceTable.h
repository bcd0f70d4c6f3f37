#pragma once

#include "package/Bytes.h"

#include <optional>
#include <string>
#include <vector>

namespace quillnest
{

/// Reads Android's resource tables. Input is untrusted: malformed bytes give empty results, fields past the end count
/// as zero, and the work done is bounded by the budget that is given, or by one that follows from the input's size.
/// Touches nothing but the bytes. Any thread.
namespace ResourceTable
{
/// One value of a resource in one configuration.
struct Entry {
    /// The number of the configuration, markers (0, 0xFFFE, 0xFFFF) included.
    int density = 0;
    /// Text of a string value: a path in the package for a resource that is a file.
    std::optional<std::string> file;
    std::uint8_t type = 0;
    std::uint32_t data = 0;

    bool operator==(const Entry &) const = default;
};

/// The values of a resource id (0xPPTTEEEE) in all configurations of a table, in the table's order. References are not
/// followed.
std::vector<Entry> entries(ByteView bytes, std::uint32_t id);
std::vector<Entry> entries(ByteView bytes, std::uint32_t id, WorkBudget &budget);
} // namespace ResourceTable

} // namespace quillnest
