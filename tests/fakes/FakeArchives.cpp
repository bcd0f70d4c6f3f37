#include "fakes/FakeArchives.h"

namespace quillnest
{

namespace
{

class FakePackage : public OpenArchive
{
public:
    FakePackage(FakeArchives::Entries entries, std::vector<std::string> &reads)
        : m_entries(std::move(entries)), m_reads(reads)
    {
        for (const auto &[name, bytes] : m_entries)
            m_names.emplace_back(name);
    }

    const std::vector<std::string_view> &names() const override { return m_names; }

protected:
    bool append(std::size_t index, std::size_t limit, Bytes &bytes) override
    {
        const auto &[name, content] = m_entries[index];
        m_reads.push_back(name);
        if (content.size() > limit - bytes.size())
            return false;
        bytes.insert(bytes.end(), content.begin(), content.end());
        return true;
    }

private:
    const FakeArchives::Entries m_entries;
    std::vector<std::string> &m_reads;
    std::vector<std::string_view> m_names;
};

} // namespace

std::unique_ptr<OpenArchive> FakeArchives::open(const std::string &path)
{
    opened.push_back(path);
    const auto package = packages.find(path);
    return package == packages.end() ? nullptr : std::make_unique<FakePackage>(package->second, reads);
}

bool FakeArchives::unpack(const QString &archive, const QString &folder)
{
    const auto name = archive.section(u'/', -1);
    unpacked.append(name + QStringLiteral(" > ") + folder);
    if (refused == name)
        return false;
    if (onUnpack)
        onUnpack(archive);
    return true;
}

bool FakeArchives::pack(const std::vector<Item> & /*items*/, const QString & /*archive*/)
{
    return false;
}

} // namespace quillnest
