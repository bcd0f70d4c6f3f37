#include "platform/posix/Volume.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace quillnest
{

bool Volume::exchange(const std::filesystem::path &first, const std::filesystem::path &second, bool &isUnable)
{
    if (::renameat2(AT_FDCWD, first.c_str(), AT_FDCWD, second.c_str(), RENAME_EXCHANGE) == 0)
        return true;
    isUnable = errno == EINVAL || errno == ENOSYS;
    return false;
}

bool Volume::writeOut(const std::filesystem::path &folder)
{
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool written = ::syncfs(descriptor) == 0;
    ::close(descriptor);
    return written;
}

} // namespace quillnest
