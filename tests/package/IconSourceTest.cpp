#include "package/IconSource.h"

#include "fakes/FakeArchives.h"
#include "fakes/RecordingDrawing.h"

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{

class IconSourceTest : public ::testing::Test
{
protected:
    void put(const std::string &name, std::size_t size)
    {
        archives.packages["app.apk"].emplace_back(name, FakeArchives::Bytes(size, 'x'));
    }

    FakeArchives archives;
    RecordingDrawing drawing;
    const APKIconExtractor::IconTools tools{archives, drawing, [](const std::string &) {}};
};

} // namespace

TEST_F(IconSourceTest, theFilesOfOneIconTogetherHoldNoMoreThanIsGranted)
{
    constexpr std::size_t half = 30 * 1024 * 1024;
    put("a", half);
    put("b", half);
    put("c", half);
    put("d", 1000);
    const auto package = archives.open("app.apk");
    IconSource source(tools, *package, {});
    EXPECT_TRUE(source.read("a"));
    EXPECT_TRUE(source.read("b"));
    EXPECT_FALSE(source.read("c"));
    EXPECT_TRUE(source.read("d")) << "what fits is read all the same";
    EXPECT_TRUE(source.read("a")) << "it is kept";
}

TEST_F(IconSourceTest, anIconHasAFewLinesInTheLog)
{
    std::vector<std::string> lines;
    const APKIconExtractor::IconTools noting{
        archives, drawing, [&lines](const std::string &line) { lines.push_back(line); }};
    put("a", 1);
    const auto package = archives.open("app.apk");
    IconSource source(noting, *package, {});
    for (int i = 0; i < 1000; ++i)
        source.log("line " + std::to_string(i));
    EXPECT_EQ(lines.size(), 8U);
    EXPECT_EQ(lines.front(), "line 0");
}

TEST_F(IconSourceTest, aFileIsReadOnceEvenIfItIsEmpty)
{
    put("a", 3);
    put("empty", 0);
    const auto package = archives.open("app.apk");
    IconSource source(tools, *package, {});
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(source.read("a"));
        EXPECT_FALSE(source.read("empty"));
        EXPECT_FALSE(source.read("none"));
    }
    EXPECT_EQ(archives.reads, (std::vector<std::string>{"a", "empty"}));
}
