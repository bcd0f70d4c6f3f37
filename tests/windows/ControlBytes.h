#pragma once

#include <QByteArray>
#include <QString>
#include <QtEndian>

#include <cstdint>

/// The control messages as the device reads them, put together here byte by byte and independently of the encoder.
namespace quillnest::bytes
{

template <typename Integer> QByteArray be(Integer value)
{
    const auto swapped = qToBigEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&swapped), sizeof swapped);
}

inline QByteArray place(int x, int y, int width, int height)
{
    return be(static_cast<std::int32_t>(x)) + be(static_cast<std::int32_t>(y)) + be(static_cast<std::uint16_t>(width))
        + be(static_cast<std::uint16_t>(height));
}

constexpr int down = 0;
constexpr int up = 1;
constexpr int move = 2;

inline QByteArray touch(int action, int x, int y, int width, int height)
{
    return QByteArray(1, 2) + QByteArray(1, static_cast<char>(action)) + QByteArray::fromHex("fffffffffffffffe")
        + place(x, y, width, height) + QByteArray::fromHex(action == up ? "0000" : "ffff") + QByteArray(8, 0);
}

inline QByteArray scroll(int x, int y, int width, int height, int horizontal, int vertical)
{
    return QByteArray(1, 3) + place(x, y, width, height) + be(static_cast<std::int16_t>(horizontal))
        + be(static_cast<std::int16_t>(vertical)) + QByteArray(4, 0);
}

/// A press and its release.
inline QByteArray key(std::uint32_t code, std::uint32_t meta = 0)
{
    const auto rest = be(code) + QByteArray(4, 0) + be(meta);
    return QByteArray::fromHex("0000") + rest + QByteArray::fromHex("0001") + rest;
}

inline QByteArray text(const QString &typed)
{
    const auto encoded = typed.toUtf8();
    return QByteArray(1, 1) + be(static_cast<std::uint32_t>(encoded.size())) + encoded;
}

inline QByteArray back()
{
    return QByteArray::fromHex("04000401");
}

inline QByteArray clipboard(std::uint64_t sequence, bool paste, const QString &content)
{
    const auto encoded = content.toUtf8();
    return QByteArray(1, 9) + be(sequence) + QByteArray(1, paste ? 1 : 0)
        + be(static_cast<std::uint32_t>(encoded.size())) + encoded;
}

inline QByteArray resize(int width, int height)
{
    return QByteArray(1, 21) + be(static_cast<std::uint16_t>(width)) + be(static_cast<std::uint16_t>(height));
}

} // namespace quillnest::bytes
