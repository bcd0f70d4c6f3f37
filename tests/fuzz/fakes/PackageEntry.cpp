#include "package/PackageEntry.h"

#include "fuzz/fakes/PackageFiles.h"

#include <functional>

namespace quillnest
{

// A name stands for one of the files, always for the same.
std::vector<std::uint8_t>
PackageEntry::read(ChildProcesses & /*processes*/, const std::string & /*archivePath*/, const std::string &entryName)
{
    const auto &files = fuzz::packageFiles();
    if (files.empty())
        return {};
    const auto file = files[std::hash<std::string>()(entryName) % files.size()];
    return {file.begin(), file.end()};
}

std::vector<std::vector<std::uint8_t>> PackageEntry::readAll(
    ChildProcesses &processes, const std::string &archivePath, const std::vector<std::string> &entryNames)
{
    std::vector<std::vector<std::uint8_t>> contents;
    for (const auto &name : entryNames)
        contents.push_back(read(processes, archivePath, name));
    return contents;
}

} // namespace quillnest
