#pragma once

#include <QString>

namespace quillnest
{

/// The SHA-1 of a file as lower-case hexadecimal digits, read in blocks of 4 MiB. Throws std::runtime_error with the
/// host's words for a file that can't be read. Blocks; any thread.
QString sha1OfFile(const QString &path);

} // namespace quillnest
