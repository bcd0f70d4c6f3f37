#pragma once

#include "platform/Archives.h"

#include <QStringList>

#include <functional>
#include <map>
#include <utility>

namespace quillnest
{

/// Archives that exist in memory alone. One thread.
class FakeArchives : public Archives
{
public:
    using Bytes = OpenArchive::Bytes;
    /// In the archive's order; a name may come twice.
    using Entries = std::vector<std::pair<std::string, Bytes>>;

    /// What can be opened, by its path.
    std::map<std::string, Entries> packages;
    /// The paths that were asked for, and the names of the entries that were read, in order.
    std::vector<std::string> opened;
    std::vector<std::string> reads;

    std::unique_ptr<OpenArchive> open(const std::string &path) override;

    /// "{archive's name} > {folder}" for each, whether it was refused or not.
    QStringList unpacked;
    /// The name of an archive that can't be unpacked.
    QString refused;
    std::function<void(const QString &archive)> onUnpack;

    bool unpack(const QString &archive, const QString &folder) override;
    bool pack(const std::vector<Item> &items, const QString &archive) override;
};

} // namespace quillnest
