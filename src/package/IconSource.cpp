#include "package/IconSource.h"

#include "package/PackageLimits.h"
#include "platform/Archives.h"

#include <algorithm>

namespace quillnest
{

namespace
{
constexpr std::size_t longestLine = 4000;

// An icon of several layers in all densities, each with gradients of its own, stays far below these.
constexpr std::size_t maximumFiles = 200;
constexpr std::size_t maximumBytes = 64 * 1024 * 1024;
constexpr std::size_t maximumDrawing = 400 * 1000;
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
{
}

void IconSource::log(const std::string &line) const
{
    auto text = Bytes::repairedUtf8(
        ByteView(reinterpret_cast<const std::uint8_t *>(line.data()), std::min(line.size(), longestLine)));
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    m_tools.log(text);
}

const std::vector<APKIconExtractor::Entry> &IconSource::entries(std::uint32_t id)
{
    const auto known = m_entries.find(id);
    if (known != m_entries.end())
        return known->second;
    return m_entries[id] = APKIconExtractor::entries(m_table, id, m_reading);
}

const IconSource::Blob *IconSource::read(const std::string &file)
{
    if (!m_files.contains(file))
        prefetch({file});
    const auto known = m_files.find(file);
    return known == m_files.end() || known->second.empty() ? nullptr : &known->second;
}

void IconSource::prefetch(const std::vector<std::string> &files)
{
    std::vector<std::string> missing;
    for (const auto &file : files) {
        const bool asked = m_files.contains(file) || std::find(missing.begin(), missing.end(), file) != missing.end();
        if (!asked && m_filesLeft > 0) {
            --m_filesLeft;
            missing.push_back(file);
        }
    }
    for (const auto &name : missing) {
        auto content = m_package.read(name, m_bytesLeft);
        m_bytesLeft -= content.size();
        m_files[name] = std::move(content);
    }
}

std::vector<APKIconExtractor::Element> IconSource::elements(ByteView bytes)
{
    return APKIconExtractor::elements(bytes, m_reading);
}

} // namespace quillnest
