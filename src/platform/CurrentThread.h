#pragma once

#include <string>

namespace quillnest
{

/// Gives the calling thread a name for debuggers and lists of threads; where names must be short, the end of it.
void nameCurrentThread(const std::string &name);

/// Lets all other threads go first from now on, for good. The child processes that this thread starts do the same.
void lowerCurrentThread();

} // namespace quillnest
