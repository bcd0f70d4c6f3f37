#pragma once

#include <QString>

namespace quillnest
{

/// From now on what this process and its children make is for its user alone: files and folders whose maker says
/// nothing else of who may read them. Before any other thread.
void keepFilesPrivate();

/// Closes a folder to others, if it is there: an earlier version may have made it open.
void closeToOthers(const QString &folder);

} // namespace quillnest
