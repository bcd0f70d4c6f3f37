#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quillnest
{

class ChildProcesses;

/// Gets single entries and lists out of zip archives by means of the host's "unzip".
namespace PackageEntry
{
/// What no entry that we have a use for reaches. A small archive can stand for gigabytes.
constexpr std::size_t maximumSize = 128 * 1024 * 1024;

/// The bytes of one entry; empty if the archive or the entry can't be read, or if the entry is larger than
/// `maximumSize`. Both names are taken literally. Blocks until the child process ends; any thread but one that the
/// host's child process layer needs for its callbacks.
std::vector<std::uint8_t> read(ChildProcesses &processes, const std::string &archivePath, const std::string &entryName);

/// The bytes of several entries, in the order of their names, read side by side.
std::vector<std::vector<std::uint8_t>>
readAll(ChildProcesses &processes, const std::string &archivePath, const std::vector<std::string> &entryNames);

/// What "unzip" writes when it is run with these arguments, whatever its exit status; absent if it can't be started or
/// writes more than `maximumSize`. Blocks as `read` does.
std::optional<std::vector<std::uint8_t>> unzip(ChildProcesses &processes, const std::vector<std::string> &arguments);

/// The names of the archive's entries, each with a line feed behind it; absent as with `unzip`, empty if the archive
/// can't be read. Blocks as `read` does.
std::optional<std::vector<std::uint8_t>> list(ChildProcesses &processes, const std::string &archivePath);

/// The archive's path and an entry's name as "unzip" has to be told them, which otherwise reads some as options and
/// others as patterns.
std::string archiveArgument(const std::string &path);
std::string entryArgument(const std::string &name);
} // namespace PackageEntry

} // namespace quillnest
