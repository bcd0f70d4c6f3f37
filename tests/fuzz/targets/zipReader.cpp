#include "platform/posix/ZipReader.h"
#include "fuzz/FuzzInput.h"

#include <sys/mman.h>
#include <unistd.h>

using namespace quillnest;

/// An archive, in a file that no disk knows of.
QUILLNEST_FUZZ_TARGET(input)
{
    constexpr std::size_t limit = 256 * 1024;
    constexpr std::size_t mostEntries = 64;
    const auto bytes = input.rest();
    const int file = ::memfd_create("archive", MFD_CLOEXEC);
    fuzz::require(file >= 0);
    fuzz::require(::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    const auto archive = ZipReader::open("/proc/self/fd/" + std::to_string(file));
    if (archive) {
        const auto &names = archive->names();
        // An entry takes this many bytes of the directory at least.
        fuzz::require(names.size() <= bytes.size() / 46);
        for (std::size_t i = 0; i < std::min(names.size(), mostEntries); ++i) {
            fuzz::require(archive->read(names[i], limit).size() <= limit);
            archive->facts(i);
        }
        fuzz::require(archive->read("AndroidManifest.xml", 0).empty());
        fuzz::require(archive->readMatching("Payload/*.app/Info.plist", limit).size() <= limit);
    }
    ::close(file);
}
