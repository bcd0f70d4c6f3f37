// A library that is loaded ahead of others (LD_PRELOAD) and writes down which regular files hold bytes that have not
// been synced: a line "dirty INODE" or "clean INODE" for each change, in the file that POWER_CUT_JOURNAL names. After a
// kill, whoever empties the files that are dirty by then has what a loss of power may leave.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace
{

constexpr int most = 4096;
std::array<std::atomic_bool, most> dirty{};

int journal()
{
    static const int descriptor = [] {
        const char *path = std::getenv("POWER_CUT_JOURNAL");
        return path
            ? static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600))
            : -1;
    }();
    return descriptor;
}

template <typename Function> Function *real(const char *name)
{
    return reinterpret_cast<Function *>(::dlsym(RTLD_NEXT, name));
}

void note(const char *word, int descriptor)
{
    struct stat status {
    };
    if (descriptor == journal() || ::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return;
    char line[64];
    const int size = std::snprintf(line, sizeof line, "%s %lu\n", word, static_cast<unsigned long>(status.st_ino));
    [[maybe_unused]] const auto count = ::syscall(SYS_write, journal(), line, size);
}

void willWrite(int descriptor)
{
    if (descriptor >= 0 && descriptor < most && !dirty[static_cast<std::size_t>(descriptor)].exchange(true))
        note("dirty", descriptor);
}

int synced(int descriptor, int result)
{
    if (result == 0) {
        if (descriptor < most)
            dirty[static_cast<std::size_t>(descriptor)] = false;
        note("clean", descriptor);
    }
    return result;
}

} // namespace

extern "C" {

ssize_t write(int descriptor, const void *bytes, size_t count)
{
    static auto *const next = real<ssize_t(int, const void *, size_t)>("write");
    willWrite(descriptor);
    return next(descriptor, bytes, count);
}

ssize_t pwrite64(int descriptor, const void *bytes, size_t count, off64_t offset)
{
    static auto *const next = real<ssize_t(int, const void *, size_t, off64_t)>("pwrite64");
    willWrite(descriptor);
    return next(descriptor, bytes, count, offset);
}

ssize_t writev(int descriptor, const iovec *pieces, int count)
{
    static auto *const next = real<ssize_t(int, const iovec *, int)>("writev");
    willWrite(descriptor);
    return next(descriptor, pieces, count);
}

int fsync(int descriptor)
{
    static auto *const next = real<int(int)>("fsync");
    return synced(descriptor, next(descriptor));
}

int fdatasync(int descriptor)
{
    static auto *const next = real<int(int)>("fdatasync");
    return synced(descriptor, next(descriptor));
}

int close(int descriptor)
{
    static auto *const next = real<int(int)>("close");
    if (descriptor >= 0 && descriptor < most)
        dirty[static_cast<std::size_t>(descriptor)] = false;
    return next(descriptor);
}
}
