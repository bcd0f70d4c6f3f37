#pragma once

#include "package/Bytes.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>

#include <time.h>

/// What every target begins with: `LLVMFuzzerTestOneInput`, as libFuzzer calls it.
#define QUILLNEST_FUZZ_TARGET(input)                                                                                   \
    static void fuzzOne(quillnest::fuzz::Input input);                                                                 \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)                                  \
    {                                                                                                                  \
        const quillnest::fuzz::Stopwatch stopwatch;                                                                    \
        fuzzOne(quillnest::fuzz::Input({data, size}));                                                                 \
        return 0;                                                                                                      \
    }                                                                                                                  \
    static void fuzzOne(quillnest::fuzz::Input input)

namespace quillnest::fuzz
{

/// One input of the fuzzer: the arguments that a target takes besides its bytes stand at the beginning.
class Input
{
public:
    explicit Input(ByteView bytes) : m_bytes(bytes) { }

    /// The next four bytes; each one that isn't there counts as 0.
    std::uint32_t u32()
    {
        const auto value = Bytes::looseU32(m_bytes, 0);
        m_bytes = m_bytes.subspan(std::min<std::size_t>(4, m_bytes.size()));
        return value;
    }

    /// The next four bytes as a number with a sign.
    std::int32_t i32() { return static_cast<std::int32_t>(u32()); }

    /// The next bytes, as many as the four before them say or as there are.
    ByteView part()
    {
        const auto size = u32();
        const auto result = m_bytes.first(std::min<std::size_t>(size, m_bytes.size()));
        m_bytes = m_bytes.subspan(result.size());
        return result;
    }

    /// What a reader may spend on the bytes that are left. Few inputs get the full budget: a count that says billions
    /// is the commonest of all mutations, and to decode hundreds of thousands of strings for each leaves no time for
    /// others.
    WorkBudget budget() const
    {
        constexpr std::size_t oneOf = 2048;
        constexpr std::size_t small = 16 * 1024;
        const std::string_view text(reinterpret_cast<const char *>(m_bytes.data()), m_bytes.size());
        constexpr std::size_t large = 512 * 1024;
        const bool full = m_bytes.size() >= large || std::hash<std::string_view>()(text) % oneOf == 0;
        return full ? WorkBudget(m_bytes.size()) : WorkBudget::ofAmount(small + 4 * m_bytes.size());
    }

    /// Whether this input is one of so many; the same input always is, or never.
    bool oneOf(std::size_t count) const
    {
        const std::string_view text(reinterpret_cast<const char *>(m_bytes.data()), m_bytes.size());
        return std::hash<std::string_view>()(text) / 4096 % count == 0;
    }

    /// All that is left.
    ByteView rest() const { return m_bytes; }

private:
    ByteView m_bytes;
};

/// A promise of the reader under test; a finding if it is broken.
inline void require(bool kept)
{
    if (!kept)
        std::abort();
}

/// Bounds what one input may take of the processor. libFuzzer's own bound is one of the clock on the wall, which other
/// programs on the machine can make go by.
class Stopwatch
{
public:
    Stopwatch() : m_start(now()) { }
    ~Stopwatch()
    {
        if (now() - m_start < allowedSeconds)
            return;
        std::fprintf(stderr, "This input took %.1f seconds of the processor.\n", now() - m_start);
        std::abort();
    }
    Stopwatch(const Stopwatch &) = delete;
    Stopwatch &operator=(const Stopwatch &) = delete;

private:
    /// A second for the program as it is delivered. The instrumented readers take up to twelve times as long for the
    /// same input, as a comparison over the worst cases shows.
    static constexpr double allowedSeconds = 12;

    static double now()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    }

    const double m_start;
};

/// All text that a reader hands out is well-formed UTF-8.
inline void requireText(const std::string &text)
{
    require(Bytes::repairedUtf8({reinterpret_cast<const std::uint8_t *>(text.data()), text.size()}) == text);
}

} // namespace quillnest::fuzz
