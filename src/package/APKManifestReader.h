#pragma once

#include "package/Bytes.h"

#include <optional>
#include <string>

namespace quillnest
{

class Archives;

/// Reads the package name of an APK. A reader of its own, stricter at the file's head and looser inside the string pool
/// than APKIconExtractor; the two stay apart because callers rely on the edges of each. Any thread.
namespace APKManifestReader
{
/// The package name in the package's manifest; absent if there is none to be had, also for what is a fatal range error
/// below. Blocks.
std::optional<std::string> packageName(Archives &archives, const std::string &packagePath);

/// The package name in a compiled manifest. An empty name is returned as such. A UTF-8 string that begins at or past
/// the end of the file is a fatal range error: the process is stopped with a message. All other bad input, and input
/// that asks for far more work than its size warrants, gives absent.
std::optional<std::string> parse(ByteView bytes);
/// The same on a budget of the caller's.
std::optional<std::string> parse(ByteView bytes, WorkBudget &budget);
} // namespace APKManifestReader

} // namespace quillnest
