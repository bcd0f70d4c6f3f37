#pragma once

#include <cstdint>
#include <initializer_list>

namespace quillnest::hostile
{

/// Chance that comes out the same for the same seed on every host and with every library.
class Chance
{
public:
    explicit Chance(std::uint64_t seed) : m_state(seed) { }

    std::uint32_t u32()
    {
        m_state += 0x9E3779B97F4A7C15;
        auto value = m_state;
        value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
        value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
        return static_cast<std::uint32_t>(value >> 32);
    }
    /// From 0 to one less than `count`.
    std::uint32_t below(std::uint32_t count) { return count == 0 ? 0 : u32() % count; }
    bool oneIn(std::uint32_t count) { return below(count) == 0; }

    template <typename T> T pick(std::initializer_list<T> from)
    {
        return from.begin()[below(static_cast<std::uint32_t>(from.size()))];
    }

    /// A number that readers are likely to be wrong about; `size` is that of what the number speaks of.
    std::uint32_t number(std::uint32_t size)
    {
        switch (below(4)) {
        case 0:
            return pick<std::uint32_t>({0, 1, 2, 4, 7, 8, 12, 16, 28, 0x7F, 0x80, 0xFF, 0x100});
        case 1:
            return pick<std::uint32_t>(
                {0x7FFF, 0x8000, 0xFFFF, 0x10000, 0xFFFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFF8, 0xFFFFFFFF});
        case 2:
            return size + pick<std::uint32_t>({0, 1, 4, 0xFFFFFFFF, 0xFFFFFFFC});
        default:
            return below(2 * size + 1);
        }
    }

private:
    std::uint64_t m_state;
};

} // namespace quillnest::hostile
