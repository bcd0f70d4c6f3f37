#include "platform/posix/ZipReader.h"

#include <algorithm>
#include <array>

namespace quillnest
{

namespace
{
/// Of an archive's directory. The longest of real packages takes a few megabytes.
constexpr std::uint64_t largestDirectory = 16 * 1024 * 1024;
/// What is read besides, where an archive ends.
constexpr std::uint64_t largestEnd = 1024 * 1024;
} // namespace

std::unique_ptr<ZipReader> ZipReader::open(const std::string &path)
{
    std::unique_ptr<ZipReader> reader(new ZipReader);
    return reader->openFile(path) ? std::move(reader) : nullptr;
}

bool ZipReader::openFile(const std::string &path)
{
    // The library takes an empty file for an archive of nothing.
    if (!m_source.openFile(path) || m_source.size() == 0)
        return false;
    m_source.allow(largestDirectory + largestEnd);
    auto *source = m_source.forLibrary();
    if (!source)
        return false;
    m_archive = zip_open_from_source(source, ZIP_RDONLY, nullptr);
    if (!m_archive) {
        zip_source_free(source);
        return false;
    }
    m_source.endDirectory();
    const auto count = std::max<zip_int64_t>(zip_get_num_entries(m_archive, 0), 0);
    m_names.reserve(static_cast<std::size_t>(count));
    for (zip_int64_t i = 0; i < count; ++i) {
        // As it stands in the file: the library would guess an encoding.
        const auto *name = zip_get_name(m_archive, static_cast<zip_uint64_t>(i), ZIP_FL_ENC_RAW);
        m_names.emplace_back(name ? name : "");
    }
    return true;
}

ZipReader::~ZipReader()
{
    if (m_archive)
        zip_discard(m_archive);
}

ZipReader::Facts ZipReader::facts(std::size_t index) const
{
    Facts result;
    zip_stat_t stat;
    if (zip_stat_index(m_archive, index, 0, &stat) == 0) {
        result.modified = (stat.valid & ZIP_STAT_MTIME) != 0 ? stat.mtime : 0;
        result.storedSize = (stat.valid & ZIP_STAT_COMP_SIZE) != 0 ? stat.comp_size : 0;
    }
    zip_uint8_t host = 0;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(m_archive, index, 0, &host, &attributes) == 0) {
        result.isFromDos = host == ZIP_OPSYS_DOS;
        if (host == ZIP_OPSYS_UNIX || host == ZIP_OPSYS_OS_X)
            result.mode = attributes >> 16;
    }
    return result;
}

bool ZipReader::isReadable(std::size_t index, zip_stat_t &facts) const
{
    constexpr zip_uint64_t needed = ZIP_STAT_COMP_METHOD | ZIP_STAT_ENCRYPTION_METHOD;
    if (zip_stat_index(m_archive, index, 0, &facts) != 0 || (facts.valid & needed) != needed)
        return false;
    // The library knows others too, whose unpackers allocate what an entry tells them to.
    const bool isUsual = facts.comp_method == ZIP_CM_STORE || facts.comp_method == ZIP_CM_DEFLATE;
    return isUsual && facts.encryption_method == ZIP_EM_NONE;
}

void ZipReader::begin(std::size_t limit)
{
    // Packing makes nothing much larger, so what takes more than this only wants to take time.
    m_source.allow(limit + limit / 8 + largestEnd);
}

ZipReader::Ending ZipReader::stream(std::size_t index, std::uint64_t expected, const Taker &taker)
{
    begin(expected);
    return drain(index, taker);
}

ZipReader::Ending ZipReader::drain(std::size_t index, const Taker &taker)
{
    zip_stat_t facts;
    if (!isReadable(index, facts))
        return Ending::broken;
    auto *file = zip_fopen_index(m_archive, index, 0);
    if (!file)
        return Ending::broken;
    std::array<std::uint8_t, 64 * 1024> piece;
    zip_int64_t count = 0;
    bool isWanted = true;
    while (isWanted && (count = zip_fread(file, piece.data(), piece.size())) > 0)
        isWanted = taker({piece.data(), static_cast<std::size_t>(count)});
    zip_fclose(file);
    if (!isWanted)
        return Ending::stopped;
    return count == 0 ? Ending::whole : Ending::broken;
}

bool ZipReader::append(std::size_t index, std::size_t limit, Bytes &bytes)
{
    const auto take = [&bytes, limit](std::span<const std::uint8_t> piece) {
        if (piece.size() > limit - bytes.size())
            return false;
        // What grows by itself grows to twice its size, also past what it may hold.
        if (const auto size = bytes.size() + piece.size(); size > bytes.capacity())
            bytes.reserve(std::min(limit, std::max(size, 2 * bytes.capacity())));
        bytes.insert(bytes.end(), piece.begin(), piece.end());
        return true;
    };
    return drain(index, take) != Ending::stopped;
}

} // namespace quillnest
