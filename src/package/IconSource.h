#pragma once

#include "package/APKIconExtractor.h"
#include "package/BinaryXml.h"
#include "package/ResourceTable.h"

#include <map>

namespace quillnest
{

/// One package while its icon is made: its table, the files of it that were read so far, and how much work the icon may
/// still cost. Packages are untrusted, and a few bytes can ask for endless drawing; real icons use a fraction of what
/// is granted, and past it everything counts as absent. One thread.
class IconSource
{
public:
    using Blob = std::vector<std::uint8_t>;

    /// `table` is the package's resource table; both outlive this. What may be spent on reading follows from its size
    /// unless it is given.
    IconSource(const APKIconExtractor::IconTools &tools, OpenArchive &package, ByteView table);
    IconSource(const APKIconExtractor::IconTools &tools, OpenArchive &package, ByteView table, WorkBudget reading);

    Drawing &drawing() { return m_tools.drawing; }
    /// Writes a line to the log, made fit for it: one line, printable, of bounded length. An icon has a few of them;
    /// what it could tell of thousands of layers isn't written.
    void log(const std::string &line);

    /// The values of a resource, in the table's order.
    const std::vector<ResourceTable::Entry> &entries(std::uint32_t id);

    /// A file of the package; null if it can't be read. Blocks unless the file was read before.
    const Blob *read(const std::string &file);

    /// A compiled XML file of the package, which is decoded once; null if it can't be read. Blocks as `read` does.
    const BinaryXml::Document *document(const std::string &file);
    /// A compiled XML file that isn't one of the package's.
    BinaryXml::Document decode(ByteView bytes);

    /// Takes the cost of a step of drawing, about a microsecond each; false once all is spent.
    bool spend(std::size_t cost) { return m_drawing.spend(cost); }
    /// Whether something was left out because it would have cost too much: what has been drawn is not the icon then.
    bool isExhausted() const { return m_reading.isSpent() || m_drawing.isSpent() || m_isOutOfFiles; }

    /// For the time of one look at a resource on behalf of another. Where too many lie inside one another, as in a
    /// circle, `allowed` is false.
    class Descent
    {
    public:
        explicit Descent(IconSource &source) : m_source(source) { ++m_source.m_depth; }
        ~Descent() { --m_source.m_depth; }
        Descent(const Descent &) = delete;
        Descent &operator=(const Descent &) = delete;
        bool allowed() const { return m_source.m_depth <= maximumDepth; }

    private:
        IconSource &m_source;
    };

    /// What a line of the log holds at most.
    static constexpr std::size_t longestLine = 4000;

private:
    static constexpr int maximumDepth = 16;

    const APKIconExtractor::IconTools &m_tools;
    OpenArchive &m_package;
    const ByteView m_table;
    WorkBudget m_reading;
    WorkBudget m_drawing;
    std::size_t m_filesLeft;
    std::size_t m_bytesLeft;
    std::size_t m_linesLeft;
    int m_depth = 0;
    bool m_isOutOfFiles = false;
    std::map<std::uint32_t, std::vector<ResourceTable::Entry>> m_entries;
    std::map<std::string, Blob> m_files;
    std::map<std::string, BinaryXml::Document> m_documents;
};

} // namespace quillnest
