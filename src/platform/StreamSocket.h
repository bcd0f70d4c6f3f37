#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quillnest
{

/// A connected socket, shared by whoever reads and writes it. It is closed when the last of them is gone, so that
/// nobody ever reads from a socket that was given to somebody else meanwhile. Any thread; one that reads and one that
/// writes at a time.
class StreamSocket
{
public:
    virtual ~StreamSocket() = default;

    /// Ends both directions and wakes whoever blocks on the socket.
    virtual void shutDown() = 0;

    /// Fills the caller's memory; false at the end of the stream or on any error.
    virtual bool readExactly(std::span<std::uint8_t> bytes) = 0;

    /// `count` bytes, or nothing at the end of the stream or on any error. A count of 0 reads nothing.
    std::optional<std::vector<std::uint8_t>> readExactly(std::size_t count)
    {
        std::vector<std::uint8_t> bytes(count);
        return readExactly(std::span(bytes)) ? std::optional(std::move(bytes)) : std::nullopt;
    }

    /// Writes everything, or abandons it on an error. Blocks while the other side doesn't read.
    virtual bool writeAll(std::span<const std::uint8_t> bytes) = 0;

    /// Writes what can be written without waiting and gives its length, or nothing on an error.
    virtual std::optional<std::size_t> writeAtOnce(std::span<const std::uint8_t> bytes) = 0;
};

} // namespace quillnest
