#pragma once

#include <zip.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace quillnest
{

/// The file below an archive as libzip reads it, which bounds what the library does. One thread.
///
/// The library reads the whole directory when it opens an archive, also as often as there are ends of an archive to
/// choose from, and keeps the names in a table whose rows a hostile archive can make as long as it is. So reading costs
/// of an allowance, a directory has a limited number of parts and an archive of ends, and one whose names crowd in a
/// few rows can't be read.
class ZipSource
{
public:
    /// Opens a plain file; false if it is none, or ends as no honest archive does.
    bool openFile(const std::string &path);
    ~ZipSource();
    ZipSource() = default;
    ZipSource(const ZipSource &) = delete;
    ZipSource &operator=(const ZipSource &) = delete;

    /// As libzip wants it, on this object. Null if there is no memory; to be freed if no archive takes it over.
    zip_source_t *forLibrary();

    std::uint64_t size() const { return m_size; }
    /// How many bytes may be read from now on.
    void allow(std::uint64_t bytes) { m_allowance = bytes; }
    /// From now on no names are read.
    void endDirectory();

private:
    static zip_int64_t answer(void *self, void *data, zip_uint64_t length, zip_source_cmd_t command);
    zip_int64_t read(std::uint8_t *data, std::uint64_t length);
    zip_int64_t fail(int reason);
    std::size_t readSome(std::uint8_t *data, std::size_t length);
    bool fill();
    bool isCrowded(std::string_view text);
    bool hasManyEnds() const;

    int m_descriptor = -1;
    std::uint64_t m_size = 0;
    std::uint64_t m_position = 0;
    std::uint64_t m_allowance = 0;
    zip_error_t m_error{};

    /// What was read ahead, and where it begins in the file.
    std::vector<std::uint8_t> m_buffer;
    std::uint64_t m_bufferStart = 0;

    bool m_readsDirectory = true;
    std::size_t m_reads = 0;
    std::unordered_set<std::size_t> m_seen;
    std::vector<std::uint16_t> m_rows;
};

} // namespace quillnest
