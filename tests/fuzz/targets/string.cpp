#include "fuzz/FuzzInput.h"
#include "package/BinaryXml.h"

using namespace quillnest;

QUILLNEST_FUZZ_TARGET(input)
{
    const auto pool = input.i32();
    const auto index = input.i32();
    const auto text = BinaryXml::string(input.rest(), pool, index);
    if (!text)
        return;
    fuzz::require(index >= 0);
    fuzz::requireText(*text);
    // No byte of the file becomes more than the three of a replacement.
    fuzz::require(text->size() <= 3 * input.rest().size());
}
