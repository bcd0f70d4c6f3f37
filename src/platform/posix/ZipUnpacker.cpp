#include "platform/posix/ZipUnpacker.h"

#include "platform/posix/ZipReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <optional>

namespace quillnest
{

namespace
{

namespace fs = std::filesystem;

/// More than any name and any link's target has.
constexpr std::size_t longestName = 4000;
constexpr std::uint64_t largestFile = std::uint64_t{1} << 40;

/// A name as a path within the folder, maybe the folder itself; absent if it leads out.
std::optional<fs::path> pathWithin(std::string_view name, bool isFromDos)
{
    std::string text(name);
    // Some hosts separate by the other stroke.
    auto strict = text;
    std::replace(strict.begin(), strict.end(), '\\', '/');
    if (strict.empty() || strict.starts_with('/') || strict.size() > longestName)
        return std::nullopt;
    fs::path result;
    for (const auto &part : fs::path(strict)) {
        if (part == "..")
            return std::nullopt;
    }
    for (const auto &part : fs::path(isFromDos ? strict : text)) {
        if (part != "." && !part.empty())
            result /= part;
    }
    return result;
}

bool isFolder(const fs::path &path)
{
    std::error_code problem;
    return fs::symlink_status(path, problem).type() == fs::file_type::directory;
}

class Unpacking
{
public:
    Unpacking(ZipReader &archive, const fs::path &root) : m_archive(archive), m_root(root) { }

    bool entry(std::size_t index)
    {
        const auto name = m_archive.names()[index];
        const auto facts = m_archive.facts(index);
        const auto relative = pathWithin(name, facts.isFromDos);
        if (!relative)
            return false;
        const auto place = relative->empty() ? m_root : m_root / *relative;
        if (name.ends_with('/') || (facts.isFromDos && name.ends_with('\\')))
            return folder(place, facts.mode);
        if (!folder(place.parent_path(), 0) || !makeRoom(place))
            return false;
        return S_ISLNK(facts.mode) ? link(index, place) : file(index, place, facts);
    }

private:
    /// Whether a folder is there, or could be made with those above it. A link to one doesn't count.
    bool folder(const fs::path &place, std::uint32_t mode)
    {
        if (place != m_root && !(place == m_known)) {
            if (!folder(place.parent_path(), 0))
                return false;
            if (::mkdir(place.c_str(), 0755) != 0 && (errno != EEXIST || !isFolder(place)))
                return false;
        }
        m_known = place;
        // What is to come has to find its way in.
        return mode == 0 || ::chmod(place.c_str(), (mode & 0777) | 0700) == 0;
    }

    /// Of two entries of one name the later one stays.
    static bool makeRoom(const fs::path &place) { return ::unlink(place.c_str()) == 0 || errno == ENOENT; }

    bool link(std::size_t index, const fs::path &place)
    {
        std::string target;
        const auto take = [&target](std::span<const std::uint8_t> piece) {
            target.append(piece.begin(), piece.end());
            return target.size() <= longestName;
        };
        return m_archive.stream(index, longestName, take) == ZipReader::Ending::whole
            && target.find('\0') == std::string::npos && ::symlink(target.c_str(), place.c_str()) == 0;
    }

    bool file(std::size_t index, const fs::path &place, const ZipReader::Facts &facts)
    {
        const int descriptor = ::open(place.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (descriptor < 0)
            return false;
        const auto take = [descriptor](std::span<const std::uint8_t> piece) {
            while (!piece.empty()) {
                const auto count = ::write(descriptor, piece.data(), piece.size());
                if (count < 0 && errno == EINTR)
                    continue;
                if (count <= 0)
                    return false;
                piece = piece.subspan(static_cast<std::size_t>(count));
            }
            return true;
        };
        const timespec times[]{{0, UTIME_OMIT}, {static_cast<time_t>(facts.modified), 0}};
        // Nobody is made somebody else by a file that he unpacks.
        const auto mode = facts.mode == 0 ? 0644 : facts.mode & 0777;
        const bool isWhole = m_archive.stream(index, largestFile, take) == ZipReader::Ending::whole
            && ::fchmod(descriptor, mode) == 0 && ::futimens(descriptor, times) == 0;
        return ::close(descriptor) == 0 && isWhole;
    }

    ZipReader &m_archive;
    const fs::path m_root;
    /// A folder that is there.
    fs::path m_known;
};

} // namespace

bool unpackZip(ZipReader &archive, const fs::path &folder)
{
    const auto count = archive.names().size();
    // Entries that lie over one another could unpack to any size out of a few bytes.
    std::uint64_t stored = 0;
    for (std::size_t i = 0; i < count; ++i)
        stored += std::min(archive.facts(i).storedSize, archive.size() + 1);
    if (count == 0 || stored > archive.size())
        return false;
    Unpacking unpacking(archive, folder);
    for (std::size_t i = 0; i < count; ++i) {
        if (!unpacking.entry(i))
            return false;
    }
    return true;
}

} // namespace quillnest
