#pragma once

#include "hostile/Chance.h"
#include "package/PackageBuilder.h"

#include <string>
#include <vector>

/// The files that a package's readers look into: well formed as far as their heads go, and then as it comes.
namespace quillnest::hostile
{

using build::Blob;

/// A package's resources: the ids from `firstResource` on are these, in their order.
constexpr std::uint32_t firstResource = 0x7F010000;

struct Package {
    Blob manifest;
    Blob table;
    /// Name and content.
    std::vector<std::pair<std::string, Blob>> files;
};

Package package(Chance &chance);

} // namespace quillnest::hostile
