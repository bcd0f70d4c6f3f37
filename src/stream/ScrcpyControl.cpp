#include "stream/ScrcpyControl.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace quillnest::ScrcpyControl
{

namespace
{

/// One generic finger, the same in every message.
constexpr std::uint64_t pointerId = 0xFFFFFFFFFFFFFFFE;

template <typename Integer> void append(QByteArray &bytes, Integer value)
{
    const auto swapped = qToBigEndian(value);
    bytes.append(reinterpret_cast<const char *>(&swapped), sizeof swapped);
}

QByteArray message(std::uint8_t type)
{
    return QByteArray(1, static_cast<char>(type));
}

QByteArray twoBytes(std::uint8_t type, std::uint8_t value)
{
    auto bytes = message(type);
    append(bytes, value);
    return bytes;
}

} // namespace

std::uint16_t u16fp(float value)
{
    if (value >= 1.0F)
        return 0xFFFF;
    return static_cast<std::uint16_t>(std::max(value, 0.0F) * 65536.0F);
}

std::int16_t i16fp(float value)
{
    if (value >= 1.0F)
        return 0x7FFF;
    return static_cast<std::int16_t>(std::max(value, -1.0F) * 32768.0F);
}

void position(QByteArray &bytes, QPointF point, QSizeF frame)
{
    append(bytes, static_cast<std::int32_t>(std::lround(point.x())));
    append(bytes, static_cast<std::int32_t>(std::lround(point.y())));
    // By way of a wider integer: the size is what the device announced, and what doesn't fit is to be cut off.
    append(bytes, static_cast<std::uint16_t>(static_cast<std::int64_t>(frame.width())));
    append(bytes, static_cast<std::uint16_t>(static_cast<std::int64_t>(frame.height())));
}

QByteArray key(KeyAction action, std::uint32_t keycode, std::uint32_t meta)
{
    auto bytes = twoBytes(keyType, static_cast<std::uint8_t>(action));
    append(bytes, keycode);
    append(bytes, std::uint32_t{0});
    append(bytes, meta);
    return bytes;
}

QByteArray text(const QString &text)
{
    const auto encoded = text.toUtf8().left(300);
    auto bytes = message(textType);
    append(bytes, static_cast<std::uint32_t>(encoded.size()));
    return bytes + encoded;
}

QByteArray touch(MotionAction action, QPointF at, QSizeF frame)
{
    auto bytes = twoBytes(touchType, static_cast<std::uint8_t>(action));
    append(bytes, pointerId);
    position(bytes, at, frame);
    append(bytes, u16fp(action == MotionAction::up ? 0.0F : 1.0F));
    append(bytes, std::uint32_t{0});
    append(bytes, std::uint32_t{0});
    return bytes;
}

QByteArray scroll(QPointF at, QSizeF frame, float horizontal, float vertical)
{
    auto bytes = message(scrollType);
    position(bytes, at, frame);
    append(bytes, i16fp(horizontal));
    append(bytes, i16fp(vertical));
    append(bytes, std::uint32_t{0});
    return bytes;
}

QByteArray setClipboard(const QString &text, bool paste, std::uint64_t sequence)
{
    const auto encoded = text.toUtf8().left(200000);
    auto bytes = message(setClipboardType);
    append(bytes, sequence);
    append(bytes, static_cast<std::uint8_t>(paste ? 1 : 0));
    append(bytes, static_cast<std::uint32_t>(encoded.size()));
    return bytes + encoded;
}

QByteArray startApp(const QString &text)
{
    const auto encoded = text.toUtf8().left(255);
    return twoBytes(startAppType, static_cast<std::uint8_t>(encoded.size())) + encoded;
}

QByteArray resizeDisplay(int width, int height)
{
    auto bytes = message(resizeDisplayType);
    append(bytes, static_cast<std::uint16_t>(std::clamp(width, 0, 0xFFFF)));
    append(bytes, static_cast<std::uint16_t>(std::clamp(height, 0, 0xFFFF)));
    return bytes;
}

QByteArray backDown()
{
    return twoBytes(backType, 0);
}

QByteArray backUp()
{
    return twoBytes(backType, 1);
}

QByteArray getClipboardCopy()
{
    return twoBytes(getClipboardType, 1);
}

QByteArray getClipboardCut()
{
    return twoBytes(getClipboardType, 2);
}

QByteArray resetVideo()
{
    return message(resetVideoType);
}

} // namespace quillnest::ScrcpyControl
