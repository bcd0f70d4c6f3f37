#pragma once

#include <filesystem>
#include <string>

struct zip;

namespace quillnest
{

/// Writes a new zip archive, by libzip. Blocks. One thread.
class ZipWriter
{
public:
    /// The file must not be there yet.
    explicit ZipWriter(const std::filesystem::path &archive);
    /// Without `finish` there is no archive.
    ~ZipWriter();
    ZipWriter(const ZipWriter &) = delete;
    ZipWriter &operator=(const ZipWriter &) = delete;

    /// Takes down a file, a link or a folder with all that lies in it under a name. False if it is something else, or
    /// can't be looked at.
    bool add(const std::string &name, const std::filesystem::path &path) { return add(name, path, 0); }
    /// Reads and writes it all. False if a file can't be read or the disk refuses.
    bool finish();

private:
    bool add(const std::string &name, const std::filesystem::path &path, int depth);
    bool addFolder(const std::string &name, const std::filesystem::path &path, int depth);
    bool keep(std::int64_t index, std::uint32_t mode, std::int64_t modified);

    zip *m_archive = nullptr;
};

} // namespace quillnest
