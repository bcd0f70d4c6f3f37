#pragma once

#include "package/Bytes.h"
#include "platform/Archives.h"

#include <functional>
#include <vector>

namespace quillnest::fuzz
{

/// A package in which any name stands for one of a few files, always for the same.
class PackageFiles : public OpenArchive
{
public:
    explicit PackageFiles(std::vector<ByteView> files) : m_files(std::move(files)) { }

    const std::vector<std::string_view> &names() const override { return m_none; }

    Bytes read(std::string_view name, std::size_t limit) override
    {
        if (m_files.empty())
            return {};
        const auto file = m_files[std::hash<std::string_view>()(name) % m_files.size()];
        return file.size() > limit ? Bytes() : Bytes(file.begin(), file.end());
    }

protected:
    bool append(std::size_t /*index*/, std::size_t /*limit*/, Bytes & /*bytes*/) override { return false; }

private:
    const std::vector<ByteView> m_files;
    const std::vector<std::string_view> m_none;
};

/// Nothing to be opened.
class NoArchives : public Archives
{
public:
    std::unique_ptr<OpenArchive> open(const std::string & /*path*/) override { return nullptr; }
    bool unpack(const QString & /*archive*/, const QString & /*folder*/) override { return false; }
    bool pack(const std::vector<Item> & /*items*/, const QString & /*archive*/) override { return false; }
};

} // namespace quillnest::fuzz
