#pragma once

#include "hostile/Chance.h"

#include <string>

/// Texts that somebody would be sorry to have believed.
namespace quillnest::hostile
{

/// A label: now and then an honest one, at times one of a megabyte.
std::string label(Chance &chance);
std::string packageName(Chance &chance);
/// A name of an archive's entry.
std::string entryName(Chance &chance);
std::string pathData(Chance &chance);

} // namespace quillnest::hostile
