#include "tool/RemoteCommand.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace standin
{

namespace
{

bool writeAll(int fd, const char *data, size_t size)
{
    while (size > 0) {
        const ssize_t put = ::write(fd, data, size);
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return false;
        data += put;
        size -= static_cast<size_t>(put);
    }
    return true;
}

bool readExactly(int fd, char *data, size_t size)
{
    while (size > 0) {
        const ssize_t got = ::read(fd, data, size);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        data += got;
        size -= static_cast<size_t>(got);
    }
    return true;
}

void append(std::string &bytes, const std::string &text)
{
    const auto size = static_cast<uint32_t>(text.size());
    bytes.append(reinterpret_cast<const char *>(&size), sizeof size);
    bytes += text;
}

std::string request(int argc, char **argv)
{
    std::array<char, 4096> folder = {};
    const char *classPath = std::getenv("CLASSPATH");
    const auto count = static_cast<uint32_t>(argc + 2);
    std::string bytes(reinterpret_cast<const char *>(&count), sizeof count);
    append(bytes, ::getcwd(folder.data(), folder.size()) != nullptr ? folder.data() : "/");
    append(bytes, classPath != nullptr ? classPath : "");
    const char *slash = std::strrchr(argv[0], '/');
    append(bytes, slash != nullptr ? slash + 1 : argv[0]);
    for (int i = 1; i < argc; ++i)
        append(bytes, argv[i]);
    return bytes;
}

bool sendInput(int device)
{
    std::array<char, 64 * 1024> buffer;
    const ssize_t got = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    std::string bytes;
    append(bytes, std::string(buffer.data(), got > 0 ? static_cast<size_t>(got) : 0));
    return writeAll(device, bytes.data(), bytes.size());
}

} // namespace

int runRemoteCommand(int argc, char **argv)
{
    const int device = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "/dev/socket/device");
    if (::connect(device, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        std::fprintf(stderr, "%s: the device does not answer: %s\n", argv[0], std::strerror(errno));
        return 255;
    }
    const std::string bytes = request(argc, argv);
    if (!writeAll(device, bytes.data(), bytes.size()))
        return 255;
    std::string data;
    for (;;) {
        std::array<char, 5> header;
        if (!readExactly(device, header.data(), header.size()))
            return 255;
        uint32_t size = 0;
        std::memcpy(&size, header.data() + 1, sizeof size);
        data.resize(size);
        if (!readExactly(device, data.data(), size))
            return 255;
        bool alive = true;
        switch (header[0]) {
        case 'o':
            alive = writeAll(STDOUT_FILENO, data.data(), data.size());
            break;
        case 'e':
            alive = writeAll(STDERR_FILENO, data.data(), data.size());
            break;
        case 'i':
            alive = sendInput(device);
            break;
        case 'x':
            return size > 0 ? static_cast<unsigned char>(data[0]) : 255;
        default:
            return 255;
        }
        if (!alive)
            return 255;
    }
}

} // namespace standin
