#include "platform/posix/ZipSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace quillnest
{

namespace
{
constexpr std::size_t readAhead = 32 * 1024;
constexpr std::size_t rowCount = 65536;
/// Half a million names that nobody chose for it leave no row with more than forty.
constexpr std::uint16_t longestRow = 200;
/// The library looks at the directory for each end of an archive that it finds, and they may be many.
constexpr int mostEnds = 16;
/// Of parts of the directory. Each entry takes two, and a few microseconds.
constexpr std::size_t mostReads = 150'000;

/// As libzip tells the names apart.
std::uint32_t libraryHash(std::string_view text)
{
    std::uint32_t value = 5381;
    for (const char character : text)
        value = value * 33 + static_cast<unsigned char>(character);
    return value;
}
} // namespace

bool ZipSource::openFile(const std::string &path)
{
    // Opening a pipe would wait for somebody to write, and a name may stand for one.
    m_descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat facts;
    if (m_descriptor < 0 || ::fstat(m_descriptor, &facts) != 0 || !S_ISREG(facts.st_mode))
        return false;
    m_size = static_cast<std::uint64_t>(facts.st_size);
    return !hasManyEnds();
}

bool ZipSource::hasManyEnds() const
{
    // The end stands before a comment that may have as many bytes as this.
    constexpr std::uint64_t longestTail = 65535 + 22;
    std::string tail(static_cast<std::size_t>(std::min(m_size, longestTail)), '\0');
    const auto count = ::pread(m_descriptor, tail.data(), tail.size(), static_cast<off_t>(m_size - tail.size()));
    tail.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    int ends = 0;
    for (auto place = tail.find("PK\5\6"); place != std::string::npos; place = tail.find("PK\5\6", place + 1))
        ++ends;
    return ends > mostEnds;
}

ZipSource::~ZipSource()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

zip_source_t *ZipSource::forLibrary()
{
    return zip_source_function_create(&ZipSource::answer, this, nullptr);
}

void ZipSource::endDirectory()
{
    m_readsDirectory = false;
    m_seen = {};
    m_rows = {};
}

zip_int64_t ZipSource::answer(void *self, void *data, zip_uint64_t length, zip_source_cmd_t command)
{
    auto &source = *static_cast<ZipSource *>(self);
    switch (command) {
    case ZIP_SOURCE_OPEN:
        source.m_position = 0;
        return 0;
    case ZIP_SOURCE_READ:
        return source.read(static_cast<std::uint8_t *>(data), length);
    case ZIP_SOURCE_SEEK: {
        const auto place
            = zip_source_seek_compute_offset(source.m_position, source.m_size, data, length, &source.m_error);
        if (place < 0)
            return -1;
        source.m_position = static_cast<std::uint64_t>(place);
        return 0;
    }
    case ZIP_SOURCE_TELL:
        return static_cast<zip_int64_t>(source.m_position);
    case ZIP_SOURCE_STAT: {
        auto *facts = static_cast<zip_stat_t *>(data);
        zip_stat_init(facts);
        facts->size = source.m_size;
        facts->valid = ZIP_STAT_SIZE;
        return sizeof *facts;
    }
    case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&source.m_error, data, length);
    case ZIP_SOURCE_CLOSE:
    case ZIP_SOURCE_FREE:
        return 0;
    case ZIP_SOURCE_SUPPORTS:
        return ZIP_SOURCE_SUPPORTS_SEEKABLE;
    default:
        return source.fail(ZIP_ER_OPNOTSUPP);
    }
}

zip_int64_t ZipSource::fail(int reason)
{
    zip_error_set(&m_error, reason, 0);
    return -1;
}

zip_int64_t ZipSource::read(std::uint8_t *data, std::uint64_t length)
{
    const auto wanted = static_cast<std::size_t>(std::min(length, m_size - std::min(m_position, m_size)));
    if (wanted > m_allowance || (m_readsDirectory && ++m_reads > mostReads))
        return fail(ZIP_ER_READ);
    m_allowance -= wanted;
    std::size_t done = 0;
    while (done < wanted) {
        const auto count = readSome(data + done, wanted - done);
        // Shorter than it was, or unreadable.
        if (count == 0)
            return fail(ZIP_ER_READ);
        done += count;
    }
    if (m_readsDirectory && isCrowded({reinterpret_cast<const char *>(data), done}))
        return fail(ZIP_ER_INCONS);
    return static_cast<zip_int64_t>(done);
}

std::size_t ZipSource::readSome(std::uint8_t *data, std::size_t length)
{
    const bool isAhead = m_position >= m_bufferStart && m_position < m_bufferStart + m_buffer.size();
    if (!isAhead && !fill())
        return 0;
    const auto offset = static_cast<std::size_t>(m_position - m_bufferStart);
    const auto count = std::min(length, m_buffer.size() - offset);
    std::memcpy(data, m_buffer.data() + offset, count);
    m_position += count;
    return count;
}

bool ZipSource::fill()
{
    m_buffer.resize(readAhead);
    m_bufferStart = m_position;
    ssize_t count = 0;
    do {
        count = ::pread(m_descriptor, m_buffer.data(), m_buffer.size(), static_cast<off_t>(m_position));
    } while (count < 0 && errno == EINTR);
    m_buffer.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return count > 0;
}

bool ZipSource::isCrowded(std::string_view text)
{
    // Each name is read by itself. So are the other parts of an entry; those that are many are all alike, and what has
    // been seen before isn't counted, since the library doesn't keep it twice either.
    if (!m_seen.insert(std::hash<std::string_view>()(text)).second)
        return false;
    m_rows.resize(rowCount);
    return ++m_rows[libraryHash(text) % rowCount] > longestRow;
}

} // namespace quillnest
