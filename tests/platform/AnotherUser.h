#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>

namespace quillnest
{

/// A process of another user of this machine, which holds a socket until the object goes. Needs root.
class AnotherUser
{
public:
    static bool canBeMade() { return ::geteuid() == 0; }

    /// One that has connected to a port of this machine, and has perhaps gone at once.
    static AnotherUser connected(std::uint16_t port, bool stays = true) { return AnotherUser(port, true, stays); }
    /// One that listens at a port of this machine.
    static AnotherUser listening(std::uint16_t port) { return AnotherUser(port, false, true); }

    ~AnotherUser()
    {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    AnotherUser(const AnotherUser &) = delete;
    AnotherUser &operator=(const AnotherUser &) = delete;

private:
    AnotherUser(std::uint16_t port, bool connects, bool stays)
    {
        int ready[2];
        if (::pipe(ready) != 0)
            return;
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(port);
        const auto *where = reinterpret_cast<const sockaddr *>(&address);
        m_process = ::fork();
        if (m_process == 0) {
            constexpr uid_t nobody = 65534;
            const bool isOther = ::setresuid(nobody, nobody, nobody) == 0;
            const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
            const bool good = isOther
                && (connects ? ::connect(socket, where, sizeof address) == 0
                             : ::bind(socket, where, sizeof address) == 0 && ::listen(socket, 1) == 0);
            if (!stays)
                ::close(socket);
            const char byte = good ? 'y' : 'n';
            [[maybe_unused]] const auto count = ::write(ready[1], &byte, 1);
            while (true)
                ::pause();
        }
        char byte = 0;
        isReady = ::read(ready[0], &byte, 1) == 1 && byte == 'y';
        ::close(ready[0]);
        ::close(ready[1]);
    }

    pid_t m_process = -1;

public:
    bool isReady = false;
};

} // namespace quillnest
