#include "package/IconVector.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/fakes/PackageFiles.h"
#include "package/IconSource.h"
#include "platform/ChildProcesses.h"
#include "platform/desktop/QtDrawing.h"

using namespace quillnest;

namespace
{
/// Files are handed out by the fake of PackageEntry, so that none is ever started.
class NoProcesses : public ChildProcesses
{
public:
    ChildResult run(const ChildCommand & /*command*/) override { std::abort(); }
    std::shared_ptr<RunningChild> start(const ChildCommand & /*command*/, Handlers /*handlers*/) override
    {
        std::abort();
    }
};

std::size_t nodes(const IconVector::Node &node)
{
    std::size_t count = 1;
    for (const auto &child : node.children)
        count += nodes(*child);
    return count;
}
} // namespace

/// The drawable, the package's table, and the files that either of them names.
QUILLNEST_FUZZ_TARGET(input)
{
    constexpr std::size_t mostFiles = 8;
    const auto drawable = input.part();
    const auto table = input.part();
    auto &files = fuzz::packageFiles();
    files.clear();
    while (!input.rest().empty() && files.size() < mostFiles)
        files.push_back(input.part());

    NoProcesses processes;
    QtDrawing drawing;
    const APKIconExtractor::IconTools tools{processes, drawing, [](const std::string &line) {
                                                fuzz::requireText(line);
                                                fuzz::require(line.find('\n') == std::string::npos);
                                            }};
    IconSource forTree(tools, "/package.apk", table);
    if (const auto root = IconVector::tree(forTree, drawable))
        fuzz::require(nodes(*root) <= drawable.size());
    IconSource forPicture(tools, "/package.apk", table);
    const auto picture = IconVector::render(forPicture, drawable, 0);
    constexpr auto side = APKIconExtractor::iconSize;
    if (picture) {
        fuzz::require(picture->width == side && picture->height == side);
        fuzz::require(picture->pixels.size() == std::size_t{side} * side);
    }
}
