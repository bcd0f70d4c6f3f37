#include "fuzz/FuzzInput.h"
#include "package/ResourceTable.h"
#include "package/ValueType.h"

using namespace quillnest;

QUILLNEST_FUZZ_TARGET(input)
{
    const auto id = input.u32();
    auto budget = input.budget();
    for (const auto &entry : ResourceTable::entries(input.rest(), id, budget)) {
        fuzz::require(entry.density >= 0 && entry.density <= 0xFFFF);
        fuzz::require(!entry.file || entry.type == ValueType::string);
        if (entry.file)
            fuzz::requireText(*entry.file);
    }
}
