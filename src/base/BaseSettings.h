#pragma once

#include "base/Setting.h"

namespace quillnest
{

/// The settings that rooms share without knowing each other.
namespace BaseSettings
{
inline constexpr Setting<bool> forwardAudio{
    "QuillnestForwardAudio", true, "sound travels with the picture, and the emulator itself is silent"};
inline constexpr Setting<double> panelWidth{"Quillnest.panelWidth", 390, "width of the panel and of app windows"};
inline constexpr Setting<double> panelHeight{"Quillnest.panelHeight", 760, "height of the panel and of app windows"};

inline QList<SettingDeclaration> all()
{
    return declarations(forwardAudio, panelWidth, panelHeight);
}
} // namespace BaseSettings

} // namespace quillnest
