#pragma once

#include <unistd.h>

#include <utility>

namespace quillnest
{

/// Owns an open descriptor, or none.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int value) : m_value(value) { }
    Descriptor(Descriptor &&other) noexcept : m_value(std::exchange(other.m_value, -1)) { }
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_value, other.m_value);
        return *this;
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() { reset(); }

    int get() const { return m_value; }
    explicit operator bool() const { return m_value >= 0; }
    void reset()
    {
        if (m_value >= 0)
            ::close(m_value);
        m_value = -1;
    }

private:
    int m_value = -1;
};

} // namespace quillnest
