#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace quillnest
{

/// Why a connection to the device's side failed. Its text form, `failed("...")`, is what the user is shown.
class SocketError : public std::runtime_error
{
public:
    static SocketError failed(const std::string &text) { return SocketError("failed(\"" + text + "\")"); }

private:
    using std::runtime_error::runtime_error;
};

/// A connected socket. `shutDown` wakes whoever blocks on it; the descriptor itself is closed when the last user is
/// gone, so that nobody ever reads from a descriptor that was given to somebody else meanwhile.
class StreamSocket
{
public:
    explicit StreamSocket(int descriptor) : m_descriptor(descriptor) { }
    ~StreamSocket();
    StreamSocket(const StreamSocket &) = delete;
    StreamSocket &operator=(const StreamSocket &) = delete;

    int descriptor() const { return m_descriptor; }
    void shutDown();

    /// `count` bytes, or nothing at the end of the stream or on any error. A count of 0 reads nothing.
    std::optional<std::vector<std::uint8_t>> readExactly(std::size_t count);

    /// The same into memory of the caller's.
    bool readExactly(std::span<std::uint8_t> bytes);

    /// Writes everything, or abandons it on an error. Blocks while the other side doesn't read.
    bool writeAll(std::span<const std::uint8_t> bytes);

    /// Writes what can be written without waiting and gives its length, or nothing on an error.
    std::optional<std::size_t> writeAtOnce(std::span<const std::uint8_t> bytes);

private:
    const int m_descriptor;
};

/// Unsigned big-endian 32-bit value at `at`; the caller sees to it that four bytes are there.
inline std::uint32_t readBE(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return static_cast<std::uint32_t>(bytes[at]) << 24 | static_cast<std::uint32_t>(bytes[at + 1]) << 16
        | static_cast<std::uint32_t>(bytes[at + 2]) << 8 | bytes[at + 3];
}

} // namespace quillnest
