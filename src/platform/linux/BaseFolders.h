#pragma once

#include <QString>

namespace quillnest
{

/// One of the XDG base directories: the variable if it holds an absolute path, else `fallback` below the home folder.
QString baseFolder(const char *variable, const QString &fallback);

/// Where programs keep their settings.
QString configFolder();

} // namespace quillnest
