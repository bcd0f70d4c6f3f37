#pragma once

#include <QString>

namespace quillnest
{

/// The desktop's program for looking at files. Main thread.
class FileManager
{
public:
    virtual ~FileManager() = default;

    /// Shows the folder that holds a file, with the file selected where the desktop can do that. Returns at once; a
    /// desktop that refuses does nothing.
    virtual void reveal(const QString &path) = 0;
};

} // namespace quillnest
