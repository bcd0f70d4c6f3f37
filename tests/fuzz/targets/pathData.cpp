#include "package/PathData.h"
#include "fuzz/FuzzInput.h"

using namespace quillnest;

QUILLNEST_FUZZ_TARGET(input)
{
    const auto text = input.rest();
    const auto path = PathData::parse({reinterpret_cast<const char *>(text.data()), text.size()});
    if (!path)
        return;
    fuzz::require(!path->isEmpty() && path->verbs()[0] == Path::Verb::move);
    std::size_t points = 0;
    for (const auto verb : path->verbs()) {
        const bool isOne = verb == Path::Verb::move || verb == Path::Verb::line;
        points += isOne ? 1 : verb == Path::Verb::quadratic ? 2 : verb == Path::Verb::cubic ? 3 : 0;
    }
    fuzz::require(points == path->points().size());
}
