#pragma once

#include <QString>

namespace quillnest
{

/// The folders that a host gives a program. Absolute paths without a trailing slash; they need not exist.
struct Folders {
    QString home;
    /// Parent of the program's own data folder.
    QString applicationSupport;
    /// The program's own log folder.
    QString logs;
    QString temporary;
    /// Root of the application bundle, the folder that holds "Contents".
    QString bundle;
};

} // namespace quillnest
