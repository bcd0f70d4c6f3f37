#include "platform/posix/ZipWriter.h"

#include <sys/stat.h>
#include <zip.h>

#include <algorithm>
#include <vector>

namespace quillnest
{

namespace
{
namespace fs = std::filesystem;

/// What adds a folder uses a little of the stack for each level.
constexpr int deepest = 200;
} // namespace

ZipWriter::ZipWriter(const fs::path &archive) : m_archive(zip_open(archive.c_str(), ZIP_CREATE | ZIP_EXCL, nullptr)) { }

ZipWriter::~ZipWriter()
{
    if (m_archive)
        zip_discard(m_archive);
}

bool ZipWriter::finish()
{
    if (!m_archive)
        return false;
    // An archive of nothing is one, too, but the library writes no file for it.
    const bool isEmpty = zip_get_num_entries(m_archive, 0) == 0;
    if (isEmpty || zip_close(m_archive) != 0)
        return false;
    m_archive = nullptr;
    return true;
}

bool ZipWriter::add(const std::string &name, const fs::path &path, int depth)
{
    struct stat facts;
    if (!m_archive || name.empty() || depth > deepest || ::lstat(path.c_str(), &facts) != 0)
        return false;
    if (S_ISDIR(facts.st_mode)) {
        const auto index = zip_dir_add(m_archive, name.c_str(), ZIP_FL_ENC_UTF_8);
        return keep(index, facts.st_mode, facts.st_mtime) && addFolder(name, path, depth);
    }
    zip_source_t *source = nullptr;
    if (S_ISLNK(facts.st_mode)) {
        std::error_code problem;
        const auto target = fs::read_symlink(path, problem).native();
        // The library frees what it is given by the means of C.
        auto *copy = problem ? nullptr : ::strndup(target.c_str(), target.size());
        source = copy ? zip_source_buffer(m_archive, copy, target.size(), 1) : nullptr;
        if (!source)
            ::free(copy);
    } else if (S_ISREG(facts.st_mode)) {
        source = zip_source_file(m_archive, path.c_str(), 0, -1);
    }
    if (!source)
        return false;
    const auto index = zip_file_add(m_archive, name.c_str(), source, ZIP_FL_ENC_UTF_8);
    if (index < 0)
        zip_source_free(source);
    return keep(index, facts.st_mode, facts.st_mtime);
}

bool ZipWriter::addFolder(const std::string &name, const fs::path &path, int depth)
{
    std::error_code problem;
    std::vector<fs::path> names;
    for (fs::directory_iterator entries(path, problem); !problem && entries != fs::directory_iterator();
         entries.increment(problem))
        names.push_back(entries->path().filename());
    std::sort(names.begin(), names.end());
    return !problem && std::all_of(names.begin(), names.end(), [&](const fs::path &each) {
        return add(name + '/' + each.native(), path / each, depth + 1);
    });
}

bool ZipWriter::keep(std::int64_t index, std::uint32_t mode, std::int64_t modified)
{
    const auto place = static_cast<zip_uint64_t>(index);
    return index >= 0 && zip_file_set_external_attributes(m_archive, place, 0, ZIP_OPSYS_UNIX, mode << 16) == 0
        && zip_file_set_mtime(m_archive, place, static_cast<time_t>(modified), 0) == 0;
}

} // namespace quillnest
