#pragma once

#include "fakes/FakeArchives.h"
#include "fakes/RecordingDrawing.h"
#include "package/IconSource.h"
#include "package/XmlBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quillnest
{

/// A package made of files in memory, and what its icon is drawn with: a recording unless a test brings another canvas.
class IconFixture : public ::testing::Test
{
protected:
    static constexpr std::uint32_t firstId = 0x7F010000;

    static constexpr const char *packagePath = "/p/app.apk";

    /// One package, of the files as they are when it is opened.
    class FileArchives : public FakeArchives
    {
    public:
        explicit FileArchives(const std::map<std::string, build::Blob> &files) : m_files(files) { }
        std::unique_ptr<OpenArchive> open(const std::string &package) override
        {
            packages[packagePath] = {m_files.begin(), m_files.end()};
            return FakeArchives::open(package);
        }

    private:
        const std::map<std::string, build::Blob> &m_files;
    };

    /// One value of a resource: a file's name, or something else.
    struct Resource {
        std::uint32_t density = 0;
        build::Value value;
    };

    /// A new resource of these values; the answer is its id.
    std::uint32_t resource(std::vector<Resource> values)
    {
        m_resources.push_back(std::move(values));
        m_source.reset();
        return firstId + static_cast<std::uint32_t>(m_resources.size()) - 1;
    }
    /// A new resource that is one file with this content.
    std::uint32_t fileResource(const std::string &name, build::Blob content, std::uint32_t density = 0)
    {
        files[name] = std::move(content);
        return resource({{density, build::literal(name)}});
    }
    /// The id that the next resource gets.
    std::uint32_t nextId() const { return firstId + static_cast<std::uint32_t>(m_resources.size()); }

    build::Blob table() const
    {
        build::Strings strings;
        std::vector<std::pair<std::uint32_t, std::vector<std::optional<build::Blob>>>> columns;
        for (std::size_t i = 0; i < m_resources.size(); ++i) {
            for (std::size_t j = 0; j < m_resources[i].size(); ++j) {
                const auto &[density, value] = m_resources[i][j];
                const auto data = value.raw ? strings(*value.raw) : value.data;
                // One chunk for each value keeps the order of the values.
                std::vector<std::optional<build::Blob>> column(i + 1);
                column[i] = build::fullEntry(value.type, data);
                columns.emplace_back(density, std::move(column));
            }
        }
        build::Writer chunks;
        for (const auto &[density, column] : columns)
            chunks.add(build::typeChunk(1, density, column));
        return build::table({build::pool(strings.texts()), build::package(0x7F, {chunks.bytes()})});
    }

    IconSource &source()
    {
        if (!m_source) {
            m_table = table();
            m_package = archives.open(packagePath);
            m_source.emplace(tools, *m_package, m_table);
        }
        return *m_source;
    }

    /// How often a file was read.
    std::ptrdiff_t reads(const std::string &file) const
    {
        return std::count(archives.reads.begin(), archives.reads.end(), file);
    }

    std::map<std::string, build::Blob> files;
    FileArchives archives{files};
    RecordingDrawing recording;
    std::vector<std::string> log;
    APKIconExtractor::IconTools tools{archives, recording, [this](const std::string &line) { log.push_back(line); }};

private:
    std::vector<std::vector<Resource>> m_resources;
    build::Blob m_table;
    std::unique_ptr<OpenArchive> m_package;
    std::optional<IconSource> m_source;
};

} // namespace quillnest
