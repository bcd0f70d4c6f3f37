#include "ctl/Ctl.h"

namespace quillnest
{

namespace
{

using LibrariesTest = Ctl;

TEST_F(LibrariesTest, theCompanionLoadsNothingOfADisplay)
{
    const auto result = runProgram(QStringLiteral("ldd"), {QStringLiteral(QUILLNESTCTL)});
    ASSERT_EQ(result.status, 0);
    ASSERT_TRUE(result.output.contains("libQt6Core")) << result.output.toStdString();
    for (const auto *library : {"libQt6Gui", "libQt6Widgets", "libxcb", "libX11", "libpulse", "libavcodec"})
        EXPECT_FALSE(result.output.contains(library)) << library;
}

} // namespace

} // namespace quillnest
