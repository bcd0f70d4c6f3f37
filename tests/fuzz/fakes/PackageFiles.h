#pragma once

#include "package/Bytes.h"

#include <vector>

namespace quillnest::fuzz
{

/// The files of the only package that the fake of PackageEntry knows. A target sets them anew for every input.
inline std::vector<ByteView> &packageFiles()
{
    static std::vector<ByteView> files;
    return files;
}

} // namespace quillnest::fuzz
