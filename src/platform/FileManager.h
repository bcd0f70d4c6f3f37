#pragma once

#include <QString>

#include <functional>

namespace quillnest
{

/// The desktop's program for looking at files. Main thread.
class FileManager
{
public:
    virtual ~FileManager() = default;

    /// Shows the folder that holds a file, with the file selected where the desktop can do that. Returns at once;
    /// `done` learns whether the desktop has taken it on.
    virtual void reveal(const QString &path, std::function<void(bool)> done) = 0;
};

} // namespace quillnest
