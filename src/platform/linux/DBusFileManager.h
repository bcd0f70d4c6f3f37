#pragma once

#include "platform/FileManager.h"

namespace quillnest
{

/// The file manager that has taken org.freedesktop.FileManager1 on the session bus. Without one the folder is opened by
/// whatever opens folders.
class DBusFileManager : public FileManager
{
public:
    void reveal(const QString &path, std::function<void(bool)> done) override;
};

} // namespace quillnest
