#pragma once

#include <filesystem>

namespace quillnest
{

/// What came out of an archive that nobody vouches for, in a folder that holds nothing else. Blocks.
namespace UnpackedTree
{
/// Whether there is nothing in it but files, folders and links that lead to places within, whatever else lies there
/// later: a link's ".." only stand at its head, and are no more than there are folders above it. Names hold no control
/// characters. Makes the folders open to their owner, who is about to move what is in them.
bool isHarmless(const std::filesystem::path &root);

/// Moves each of the entries of `source` into `folder`, on the same volume, over what is there, each in one step:
/// folders are put together, and of two files the new one stays. Links in `folder` are never followed. What had to make
/// way is in `source` afterwards. False when the disk refuses; what has been moved stays.
bool moveInto(const std::filesystem::path &source, const std::filesystem::path &folder);

/// Removes a tree, also one with folders that are closed to their owner. Follows no links.
void remove(const std::filesystem::path &root);
} // namespace UnpackedTree

} // namespace quillnest
