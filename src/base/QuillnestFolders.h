#pragma once

#include "platform/Folders.h"

namespace quillnest
{

/// The program's own folders. Absolute paths; they need not exist.
namespace QuillnestFolders
{
/// What the program keeps for itself.
inline QString data(const Folders &folders)
{
    return folders.applicationSupport + QStringLiteral("/Quillnest");
}

/// Packages that were pulled from the device, which belong to the program.
inline QString packages(const Folders &folders)
{
    return data(folders) + QStringLiteral("/Packages");
}

/// Icons of the apps, "{id}.png" each.
inline QString icons(const Folders &folders)
{
    return data(folders) + QStringLiteral("/Icons");
}
} // namespace QuillnestFolders

} // namespace quillnest
