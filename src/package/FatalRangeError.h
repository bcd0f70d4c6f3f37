#pragma once

namespace quillnest
{

/// Stops the process with a line on standard error. In a file of its own so that a program that has to outlive the stop
/// can be linked with another one, which throws.
[[noreturn]] void fatalRangeError(const char *message);

} // namespace quillnest
