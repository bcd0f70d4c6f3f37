#include "platform/posix/UnpackedTree.h"

#include "platform/posix/Volume.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace quillnest
{

namespace
{

namespace fs = std::filesystem;

/// More than any sensible tree has; what reads one uses a little of the stack for each.
constexpr int deepest = 200;

bool hasControlCharacters(const std::string &name)
{
    return std::any_of(name.begin(), name.end(), [](char letter) {
        const auto value = static_cast<unsigned char>(letter);
        return value < 0x20 || value == 0x7f;
    });
}

bool staysWithin(const fs::path &target, int depth)
{
    if (target.empty() || target.is_absolute() || hasControlCharacters(target.native()))
        return false;
    bool atHead = true;
    for (const auto &part : target) {
        if (part == "..") {
            if (!atHead || --depth < 0)
                return false;
        } else if (part != "." && !part.empty()) {
            atHead = false;
        }
    }
    return true;
}

void openToOwner(const fs::path &folder)
{
    std::error_code problem;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, problem);
}

/// `depth` is how many folders lie between the root and what is in this one.
bool isHarmlessFolder(const fs::path &folder, int depth)
{
    if (depth > deepest)
        return false;
    openToOwner(folder);
    std::error_code problem;
    fs::directory_iterator entries(folder, problem);
    for (; !problem && entries != fs::directory_iterator(); entries.increment(problem)) {
        const auto &path = entries->path();
        if (hasControlCharacters(path.filename().native()))
            return false;
        const auto type = entries->symlink_status(problem).type();
        if (problem)
            return false;
        if (type == fs::file_type::symlink) {
            const auto target = fs::read_symlink(path, problem);
            if (problem || !staysWithin(target, depth))
                return false;
        } else if (type == fs::file_type::directory) {
            if (!isHarmlessFolder(path, depth + 1))
                return false;
        } else if (type != fs::file_type::regular) {
            return false;
        }
    }
    return !problem;
}

bool isRealFolder(const fs::path &path)
{
    std::error_code problem;
    return fs::symlink_status(path, problem).type() == fs::file_type::directory;
}

bool isThere(const fs::path &path)
{
    std::error_code problem;
    return fs::symlink_status(path, problem).type() != fs::file_type::not_found;
}

/// Adds to a new folder what only the old one has. The old one stays as it is: files become known by both names.
bool complete(const fs::path &fresh, const fs::path &old)
{
    std::error_code problem;
    fs::directory_iterator entries(old, problem);
    for (; !problem && entries != fs::directory_iterator(); entries.increment(problem)) {
        const auto &from = entries->path();
        const auto to = fresh / from.filename();
        if (isRealFolder(from)) {
            if (isThere(to) && !isRealFolder(to))
                continue;
            fs::create_directory(to, from, problem);
            if (problem || !complete(to, from))
                return false;
        } else if (!isThere(to)) {
            // Without AT_SYMLINK_FOLLOW a link is kept as a link. Not every volume knows second names.
            if (::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), 0) != 0)
                fs::copy(from, to, fs::copy_options::copy_symlinks, problem);
            if (problem)
                return false;
        }
    }
    return !problem;
}

/// The two change places.
bool exchange(const fs::path &first, const fs::path &second)
{
    bool isUnable = false;
    if (Volume::exchange(first, second, isUnable))
        return true;
    if (!isUnable)
        return false;
    // A volume that can't do it in one step.
    auto aside = second;
    aside += ".old";
    std::error_code problem;
    fs::rename(second, aside, problem);
    if (!problem)
        fs::rename(first, second, problem);
    if (!problem)
        fs::rename(aside, first, problem);
    return !problem;
}

} // namespace

bool UnpackedTree::isHarmless(const fs::path &root)
{
    return isHarmlessFolder(root, 0);
}

bool UnpackedTree::moveInto(const fs::path &source, const fs::path &folder)
{
    std::error_code problem;
    std::vector<fs::path> names;
    for (const auto &entry : fs::directory_iterator(source, problem))
        names.push_back(entry.path().filename());
    if (problem)
        return false;
    for (const auto &name : names) {
        const auto fresh = source / name;
        const auto place = folder / name;
        const bool isMerge = isRealFolder(fresh) && isRealFolder(place);
        if (isMerge && !complete(fresh, place))
            return false;
        if (isThere(place) ? !exchange(fresh, place) : ::rename(fresh.c_str(), place.c_str()) != 0)
            return false;
    }
    return true;
}

void UnpackedTree::remove(const fs::path &root)
{
    std::error_code problem;
    if (fs::remove_all(root, problem) != static_cast<std::uintmax_t>(-1) || !isRealFolder(root))
        return;
    for (const auto &entry : fs::directory_iterator(root, problem)) {
        if (isRealFolder(entry.path())) {
            openToOwner(entry.path());
            UnpackedTree::remove(entry.path());
        }
    }
    fs::remove_all(root, problem);
}

} // namespace quillnest
