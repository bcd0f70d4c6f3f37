#pragma once

#include <unistd.h>
#include <utility>

namespace standin
{

/// Owns one file descriptor and closes it. Not thread safe; moving leaves -1 behind.
class UniqueFd
{
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : m_fd(fd) { }
    UniqueFd(UniqueFd &&other) noexcept : m_fd(std::exchange(other.m_fd, -1)) { }
    UniqueFd &operator=(UniqueFd &&other) noexcept
    {
        if (this != &other)
            reset(std::exchange(other.m_fd, -1));
        return *this;
    }
    ~UniqueFd() { reset(); }

    int get() const { return m_fd; }
    bool isValid() const { return m_fd >= 0; }
    void reset(int fd = -1)
    {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = fd;
    }

private:
    int m_fd = -1;
};

} // namespace standin
