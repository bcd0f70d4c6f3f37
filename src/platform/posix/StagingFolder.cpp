#include "platform/posix/StagingFolder.h"

#include "platform/posix/UnpackedTree.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <utility>

namespace quillnest
{

namespace
{

namespace fs = std::filesystem;

/// How their names begin.
constexpr const char *prefix = ".quillnest-unpack-";

} // namespace

std::optional<StagingFolder> StagingFolder::make(const fs::path &parent)
{
    auto name = (parent / prefix).native() + "XXXXXX";
    if (!::mkdtemp(name.data()))
        return std::nullopt;
    StagingFolder result{name};
    std::error_code problem;
    fs::create_directory(result.tree(), problem);
    if (problem || !result.lock(O_CREAT))
        return std::nullopt;
    return result;
}

void StagingFolder::removeLeftOvers(const fs::path &parent)
{
    std::error_code problem;
    for (const auto &entry : fs::directory_iterator(parent, problem)) {
        if (!entry.path().filename().native().starts_with(prefix) || entry.is_symlink(problem))
            continue;
        StagingFolder left{entry.path()};
        // Without a file to lock it has only just been made, or nearly been removed.
        if (!left.lock(0) && !left.isOld())
            left.m_root.clear();
    }
}

StagingFolder::StagingFolder(StagingFolder &&other) noexcept
    : m_root(std::exchange(other.m_root, {})), m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

StagingFolder::~StagingFolder()
{
    if (!m_root.empty())
        UnpackedTree::remove(m_root);
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

bool StagingFolder::lock(int flags)
{
    m_descriptor = ::open((m_root / "lock").c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | flags, 0600);
    return m_descriptor >= 0 && ::flock(m_descriptor, LOCK_EX | LOCK_NB) == 0;
}

bool StagingFolder::isOld() const
{
    struct stat facts;
    return m_descriptor < 0 && ::stat(m_root.c_str(), &facts) == 0 && ::time(nullptr) - facts.st_mtime > 60;
}

} // namespace quillnest
