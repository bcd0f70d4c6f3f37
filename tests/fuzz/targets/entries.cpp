#include "fuzz/FuzzInput.h"
#include "package/APKIconExtractor.h"

using namespace quillnest;

QUILLNEST_FUZZ_TARGET(input)
{
    const auto id = input.u32();
    auto budget = input.budget();
    for (const auto &entry : APKIconExtractor::entries(input.rest(), id, budget)) {
        fuzz::require(entry.density >= 0 && entry.density <= 0xFFFF);
        fuzz::require(!entry.file || entry.type == APKIconExtractor::stringType);
        if (entry.file)
            fuzz::requireText(*entry.file);
    }
}
