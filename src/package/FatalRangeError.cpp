#include "package/FatalRangeError.h"

#include <cstdio>
#include <cstdlib>

namespace quillnest
{

void fatalRangeError(const char *message)
{
    std::fprintf(stderr, "%s\n", message);
    std::abort();
}

} // namespace quillnest
