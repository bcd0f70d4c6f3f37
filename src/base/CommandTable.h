#pragma once

#include <array>

namespace quillnest
{

/// A command of the text channel. One that ends in a colon takes what follows as its argument, which may be empty; any
/// other matches as a whole.
struct KnownCommand {
    const char *text;
    const char *meaning;
};

/// All of them, in the order in which they are matched. What each does is told to CommandDispatcher by its room.
inline constexpr std::array<KnownCommand, 15> commandTable{{
    {"back", "presses Android's back key in the first window"},
    {"snapshot-menu", "writes a picture of the panel"},
    {"add:", "adds the package file at the path that follows"},
    {"close-all", "closes all app windows"},
    {"media", "plays or pauses what is playing"},
    {"paste", "types the clipboard's text into the first window"},
    {"copy", "copies what is selected in the first window"},
    {"adblock-on", "switches the ad block on"},
    {"adblock-off", "switches the ad block off"},
    {"wallpaper:", "chooses the wallpaper that follows"},
    {"theme:", "chooses the theme that follows"},
    {"android-version:", "switches to the Android version of the API level that follows"},
    {"home", "shows the panel"},
    {"hide", "hides the first window"},
    {"open:", "opens the first app whose name contains what follows"},
}};

} // namespace quillnest
