// What the readers take for the dearest inputs of a mebibyte that we could think of. Each is read in a process of its
// own, so that its peak of memory is its own, and is stopped if it doesn't end. The figures are printed.
#include "package/APKManifestReader.h"
#include "package/BinaryXml.h"
#include "package/ResourceTable.h"
#include "package/WorstCases.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace quillnest;
using namespace quillnest::build;

namespace
{
/// Far above what any of them takes, instrumented or not: this is for readers that don't come to an end.
constexpr rlim_t processorSeconds = 20;

#ifdef __SANITIZE_ADDRESS__
constexpr bool isInstrumented = true;
#else
constexpr bool isInstrumented = false;
#endif

struct Figures {
    double seconds = 0;
    long kibibytes = 0;
};

// An exception would carry on with the tests in the child.
void readOnce(const WorstCase &input) noexcept
{
    if (input.reader == "elements")
        BinaryXml::elements(input.bytes);
    else if (input.reader == "stringPool")
        BinaryXml::stringPool(input.bytes, input.arguments.at(0));
    else if (input.reader == "string")
        BinaryXml::string(input.bytes, input.arguments.at(0), input.arguments.at(1));
    else if (input.reader == "entries")
        ResourceTable::entries(input.bytes, input.arguments.at(0));
    else if (input.reader == "parse")
        APKManifestReader::parse(input.bytes);
    else
        std::abort();
}

double processorTime()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// The largest this process has been in memory since `forgetPeak`.
long peakKibibytes()
{
    std::ifstream status("/proc/self/status");
    std::string key;
    while (status >> key && key != "VmHWM:") { }
    long kibibytes = 0;
    status >> kibibytes;
    return kibibytes;
}

void forgetPeak()
{
    // What the parent has freed is not to serve the child for nothing.
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5;
}

/// Absent if the reader didn't return.
std::optional<Figures> measured(const WorstCase &input)
{
    int ends[2];
    if (pipe(ends) != 0)
        return std::nullopt;
    const auto child = fork();
    if (child == 0) {
        const rlimit limit{processorSeconds, processorSeconds};
        setrlimit(RLIMIT_CPU, &limit);
        forgetPeak();
        const auto startTime = processorTime();
        const auto startPeak = peakKibibytes();
        readOnce(input);
        const Figures figures{processorTime() - startTime, peakKibibytes() - startPeak};
        const bool isWritten = write(ends[1], &figures, sizeof figures) == sizeof figures;
        _exit(isWritten ? 0 : 1);
    }
    close(ends[1]);
    Figures figures;
    const bool isRead = read(ends[0], &figures, sizeof figures) == sizeof figures;
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return isRead && WIFEXITED(status) && WEXITSTATUS(status) == 0 ? std::optional(figures) : std::nullopt;
}

void expectCheap(const std::string &reader)
{
    constexpr long allowedKibibytes = 256 * 1024;
    int seen = 0;
    for (const auto &input : worstCases()) {
        if (input.reader != reader)
            continue;
        ++seen;
        const auto figures = measured(input);
        ASSERT_TRUE(figures) << input.name << " doesn't come to an end";
        std::printf(
            "%s %s: %.3f s, %.1f MiB\n", reader.c_str(), input.name.c_str(), figures->seconds,
            static_cast<double>(figures->kibibytes) / 1024);
        // The sanitizer's allocator keeps freed memory and surrounds each block.
        if (!isInstrumented) {
            EXPECT_LT(figures->kibibytes, allowedKibibytes) << input.name;
        }
    }
    EXPECT_GT(seen, 0);
}
} // namespace

TEST(WorstCase, elementsEndsInBoundedMemory)
{
    expectCheap("elements");
}

TEST(WorstCase, stringPoolEndsInBoundedMemory)
{
    expectCheap("stringPool");
}

TEST(WorstCase, stringEndsInBoundedMemory)
{
    expectCheap("string");
}

TEST(WorstCase, entriesEndsInBoundedMemory)
{
    expectCheap("entries");
}

TEST(WorstCase, parseEndsInBoundedMemory)
{
    expectCheap("parse");
}
