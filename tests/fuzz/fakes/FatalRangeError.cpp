#include "package/FatalRangeError.h"

#include "fuzz/fakes/RangeError.h"

namespace quillnest
{

void fatalRangeError(const char * /*message*/)
{
    throw fuzz::RangeError();
}

} // namespace quillnest
