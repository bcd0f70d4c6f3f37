#include "launcher/LauncherCommands.h"

#include "base/CommandDispatcher.h"
#include "fakes/FakePlatform.h"
#include "launcher/LauncherSettings.h"

#include <gtest/gtest.h>

using namespace quillnest;

TEST(LauncherCommands, lookIsStoredAsText)
{
    const auto fakes = fakePlatform();
    CommandDispatcher commands(std::make_shared<QuillnestLog>(
        fakes.clock, fakes.platform.folders.logs, QStringLiteral("quillnest.log"), false));
    handleLauncherCommands(commands, *fakes.settings);
    commands.run(QStringLiteral("wallpaper:dunes"));
    commands.run(QStringLiteral("theme:glass:dark"));
    EXPECT_EQ(LauncherSettings::wallpaper.value(*fakes.settings), QStringLiteral("dunes"));
    EXPECT_EQ(LauncherSettings::theme.value(*fakes.settings), QStringLiteral("glass:dark"));
}
