#include "package/APKIconExtractor.h"

#include "package/BinaryXml.h"
#include "package/PackageLimits.h"
#include "package/ResourceTable.h"
#include "package/ValueType.h"
#include "platform/Archives.h"

#include <algorithm>

namespace quillnest
{

std::optional<std::vector<std::uint8_t>>
APKIconExtractor::read(Archives &archives, const std::string &packagePath, const std::string &entryName)
{
    const auto package = archives.open(packagePath);
    if (!package)
        return std::nullopt;
    auto bytes = package->read(entryName, PackageLimits::largestEntry);
    return bytes.empty() ? std::nullopt : std::optional(std::move(bytes));
}

std::optional<std::string> APKIconExtractor::label(Archives &archives, const std::string &packagePath)
{
    const auto package = archives.open(packagePath);
    if (!package)
        return std::nullopt;
    const auto tags = BinaryXml::elements(package->read("AndroidManifest.xml", PackageLimits::largestManifest));
    const auto application = std::find_if(
        tags.begin(), tags.end(), [](const BinaryXml::Element &tag) { return tag.name == "application"; });
    if (application == tags.end())
        return std::nullopt;
    const auto label = application->attrs.find("label");
    if (label == application->attrs.end())
        return std::nullopt;
    const auto &value = label->second;
    if (value.string && !value.string->empty())
        return value.string;
    if (value.type != ValueType::reference)
        return std::nullopt;

    const auto table = package->read("resources.arsc", PackageLimits::largestEntry);
    // The first text of the table wins, empty or not: no language is preferred.
    const auto values = ResourceTable::entries(table, value.data);
    const auto text = std::find_if(values.begin(), values.end(), [](const ResourceTable::Entry &entry) {
        return entry.type == ValueType::string;
    });
    if (text == values.end() || !text->file || text->file->empty())
        return std::nullopt;
    return text->file;
}

} // namespace quillnest
