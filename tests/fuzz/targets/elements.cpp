#include "fuzz/FuzzInput.h"
#include "package/BinaryXml.h"

using namespace quillnest;

QUILLNEST_FUZZ_TARGET(input)
{
    auto budget = input.budget();
    for (const auto &element : BinaryXml::elements(input.rest(), budget)) {
        fuzz::requireText(element.name);
        for (const auto &[name, value] : element.attrs) {
            fuzz::requireText(name);
            if (value.string)
                fuzz::requireText(*value.string);
        }
    }
}
