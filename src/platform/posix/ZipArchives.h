#pragma once

#include "platform/Archives.h"

namespace quillnest
{

/// Zip archives by libzip.
///
/// Unpacks into a folder beside the one that is asked for, looks at what came out, and moves it over. Each entry of the
/// archive's top level appears in one step: whoever looks finds it as it was or as it is to be, also after a kill at
/// any moment. What a killed run left behind goes with the next one. Packing goes the same way.
class ZipArchives : public Archives
{
public:
    std::unique_ptr<OpenArchive> open(const std::string &path) override;
    bool unpack(const QString &archive, const QString &folder) override;
    bool pack(const std::vector<Item> &items, const QString &archive) override;
};

} // namespace quillnest
