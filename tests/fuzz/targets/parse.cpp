#include "fuzz/FuzzInput.h"
#include "fuzz/fakes/RangeError.h"
#include "package/APKManifestReader.h"

using namespace quillnest;

QUILLNEST_FUZZ_TARGET(input)
{
    auto budget = input.budget();
    try {
        if (const auto name = APKManifestReader::parse(input.rest(), budget))
            fuzz::requireText(*name);
    } catch (const fuzz::RangeError &) {
        // The one stop that the reader means.
    }
}
