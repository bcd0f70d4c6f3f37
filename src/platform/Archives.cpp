#include "platform/Archives.h"

#include <QDir>

namespace quillnest
{

namespace
{

bool fits(std::string_view name, std::string_view pattern)
{
    std::size_t at = 0;
    std::size_t in = 0;
    // The last star, and the place up to which it reaches. To try it one further is enough: what lies before it fits.
    auto star = std::string_view::npos;
    std::size_t reached = 0;
    while (at < name.size()) {
        if (in < pattern.size() && pattern[in] == '*') {
            star = in++;
            reached = at;
        } else if (in < pattern.size() && (pattern[in] == '?' || pattern[in] == name[at])) {
            ++in;
            ++at;
        } else if (star != std::string_view::npos) {
            in = star + 1;
            at = ++reached;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', in) == std::string_view::npos;
}

} // namespace

OpenArchive::Bytes OpenArchive::read(std::string_view name, std::size_t limit)
{
    Bytes bytes;
    begin(limit);
    const auto &all = names();
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (all[i] == name && !append(i, limit, bytes))
            return {};
    }
    return bytes;
}

OpenArchive::Bytes OpenArchive::readMatching(std::string_view pattern, std::size_t limit)
{
    Bytes bytes;
    begin(limit);
    const auto &all = names();
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (fits(all[i], pattern) && !append(i, limit, bytes))
            return {};
    }
    return bytes;
}

bool Archives::packFolder(const QString &folder, const QString &archive)
{
    const QDir content(folder);
    if (!content.exists())
        return false;
    std::vector<Item> items;
    const auto names
        = content.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const auto &name : names)
        items.push_back({name, content.filePath(name)});
    return pack(items, archive);
}

} // namespace quillnest
