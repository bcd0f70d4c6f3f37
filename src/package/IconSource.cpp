#include "package/IconSource.h"

#include "package/PackageLimits.h"
#include "platform/Archives.h"

#include <algorithm>

namespace quillnest
{

namespace
{
// An icon of several layers in all densities, each with gradients of its own, stays far below these.
constexpr std::size_t maximumFiles = 200;
constexpr std::size_t maximumBytes = 64 * 1024 * 1024;
constexpr std::size_t maximumDrawing = 400 * 1000;
constexpr std::size_t maximumLines = 8;
} // namespace

IconSource::IconSource(const APKIconExtractor::IconTools &tools, OpenArchive &package, ByteView table)
    : IconSource(tools, package, table, WorkBudget(table.size()))
{
}

IconSource::IconSource(
    const APKIconExtractor::IconTools &tools, OpenArchive &package, ByteView table, WorkBudget reading)
    : m_tools(tools)
    , m_package(package)
    , m_table(table)
    , m_reading(reading)
    , m_drawing(WorkBudget::ofAmount(maximumDrawing))
    , m_filesLeft(maximumFiles)
    , m_bytesLeft(maximumBytes)
    , m_linesLeft(maximumLines)
{
}

void IconSource::log(const std::string &line)
{
    if (m_linesLeft == 0)
        return;
    --m_linesLeft;
    auto text = Bytes::repairedUtf8(
        ByteView(reinterpret_cast<const std::uint8_t *>(line.data()), std::min(line.size(), longestLine)));
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    m_tools.log(text);
}

const std::vector<ResourceTable::Entry> &IconSource::entries(std::uint32_t id)
{
    const auto known = m_entries.find(id);
    if (known != m_entries.end())
        return known->second;
    return m_entries[id] = ResourceTable::entries(m_table, id, m_reading);
}

const IconSource::Blob *IconSource::read(const std::string &file)
{
    auto known = m_files.find(file);
    if (known == m_files.end()) {
        if (m_filesLeft == 0) {
            m_isOutOfFiles = true;
            return nullptr;
        }
        --m_filesLeft;
        known = m_files.emplace(file, m_package.read(file, m_bytesLeft)).first;
        m_bytesLeft -= known->second.size();
    }
    return known->second.empty() ? nullptr : &known->second;
}

const BinaryXml::Document *IconSource::document(const std::string &file)
{
    const auto known = m_documents.find(file);
    if (known != m_documents.end())
        return &known->second;
    const auto *bytes = read(file);
    return bytes ? &m_documents.emplace(file, decode(*bytes)).first->second : nullptr;
}

BinaryXml::Document IconSource::decode(ByteView bytes)
{
    return BinaryXml::document(bytes, m_reading);
}

} // namespace quillnest
