#pragma once

#include <filesystem>

namespace quillnest
{

class ZipReader;

/// Writes what an archive holds into an empty folder that nobody else knows of. Names and links are taken as they are,
/// as long as no file is written outside the folder: whether the tree is harmless is for the caller to see. False if an
/// entry is broken, encrypted or has a name that leads out, or if the disk refuses. Blocks.
bool unpackZip(ZipReader &archive, const std::filesystem::path &folder);

} // namespace quillnest
