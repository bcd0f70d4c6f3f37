#pragma once

#include "base/Setting.h"

namespace quillnest
{

/// The settings of the streams.
namespace StreamSettings
{
inline constexpr Setting<bool> printFPS{"QuillnestPrintFPS", false, "frame rates go into the log of each window"};

inline QList<SettingDeclaration> all()
{
    return declarations(printFPS);
}
} // namespace StreamSettings

} // namespace quillnest
