#include "tool/EnterTree.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace standin
{

namespace
{

bool writeFile(const char *path, const std::string &text)
{
    const int fd = ::open(path, O_WRONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool written = ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    ::close(fd);
    return written;
}

bool becomeRootOfNamespace()
{
    const std::string user = std::to_string(::getuid());
    const std::string group = std::to_string(::getgid());
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    writeFile("/proc/self/setgroups", "deny"); // older kernels have no such file and need none
    return writeFile("/proc/self/uid_map", "0 " + user + " 1") && writeFile("/proc/self/gid_map", "0 " + group + " 1");
}

/// The device nodes are the host's. Where mounting is not allowed the plain files below the mount points have to do:
/// they take what is written to /dev/null and give nothing back.
void mountNodes(const std::string &root)
{
    if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return;
    for (const char *node : {"/dev/null", "/dev/zero", "/dev/random", "/dev/urandom", "/dev/tty"})
        ::mount(node, (root + node).c_str(), nullptr, MS_BIND, nullptr);
}

int failed(const char *what)
{
    std::fprintf(stderr, "device shell: %s: %s\n", what, std::strerror(errno));
    return 126;
}

} // namespace

int enterTree(const char *root, char **command)
{
    // The shell must not outlive the device.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::isatty(STDIN_FILENO) != 0)
        ::ioctl(STDIN_FILENO, TIOCSCTTY, 0);
    bool ownMounts = false;
    if (::geteuid() == 0) {
        ownMounts = ::unshare(CLONE_NEWNS) == 0;
    } else {
        if (!becomeRootOfNamespace())
            return failed("user namespace");
        ownMounts = true;
    }
    if (ownMounts)
        mountNodes(root);
    if (::chroot(root) != 0)
        return failed("chroot");
    if (::chdir("/") != 0)
        return failed("chdir");
    ::execv(command[0], command);
    return failed(command[0]);
}

} // namespace standin
