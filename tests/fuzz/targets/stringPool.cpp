#include "fuzz/FuzzInput.h"
#include "package/BinaryXml.h"

using namespace quillnest;

namespace
{
/// A string out of the whole pool is the one read by itself, or the beginning of it where the pool cuts; the cut may go
/// through a pair and leave a replacement of three bytes.
bool isBeginning(const std::string &pooled, const std::string &whole)
{
    return pooled == whole || (pooled.size() >= 4096 && whole.starts_with(pooled.substr(0, pooled.size() - 3)));
}
} // namespace

QUILLNEST_FUZZ_TARGET(input)
{
    constexpr std::size_t limit = 200000;
    constexpr std::size_t compared = 100;
    const auto offset = input.i32();
    auto budget = input.budget();
    const auto strings = BinaryXml::stringPool(input.rest(), offset, budget);
    fuzz::require(strings.size() <= limit);
    for (const auto &text : strings)
        fuzz::requireText(text);
    for (std::size_t i = 0; i < std::min(strings.size(), compared); ++i) {
        const auto whole = BinaryXml::string(input.rest(), offset, static_cast<std::int64_t>(i));
        fuzz::require(!whole || isBeginning(strings[i], *whole));
    }
}
