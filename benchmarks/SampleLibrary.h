#pragma once

#include "base/MobileApp.h"

#include <vector>

namespace quillnest::bench
{

/// A library as a long-time user would have it: names of one to four words in mixed case, some with versions, accents
/// or another script, a tenth of them favourites, in the order of their adding and the same at every call.
std::vector<MobileApp> sampleLibrary(int count);

} // namespace quillnest::bench
