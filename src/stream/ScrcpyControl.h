#pragma once

#include <QByteArray>
#include <QPointF>
#include <QSizeF>
#include <QString>

#include <cstdint>

namespace quillnest
{

/// Encodes the messages that go to the device on the control socket. All integers are big-endian, text is UTF-8, and
/// the length of a message follows from its type, its first byte. Pure functions; any thread.
namespace ScrcpyControl
{
enum class KeyAction : std::uint8_t { down = 0, up = 1 };
enum class MotionAction : std::uint8_t { down = 0, up = 1, move = 2 };

/// The first byte of a message.
enum Type : std::uint8_t {
    keyType = 0,
    textType = 1,
    touchType = 2,
    scrollType = 3,
    backType = 4,
    getClipboardType = 8,
    setClipboardType = 9,
    startAppType = 16,
    resetVideoType = 17,
    resizeDisplayType = 21,
};

/// 1.0 and more saturate at 0xFFFF, negatives count as 0.
std::uint16_t u16fp(float value);
/// 1.0 and more saturate at 0x7FFF, less than -1.0 counts as -1.0.
std::int16_t i16fp(float value);

/// Appends the position block: the point, rounded, and the size of the video frame that it refers to, cut.
void position(QByteArray &bytes, QPointF point, QSizeF frame);

QByteArray key(KeyAction action, std::uint32_t keycode, std::uint32_t meta);
/// At most 300 bytes of text go out; the cut may fall inside a character.
QByteArray text(const QString &text);
QByteArray touch(MotionAction action, QPointF at, QSizeF frame);
QByteArray scroll(QPointF at, QSizeF frame, float horizontal, float vertical);
/// At most 200000 bytes of text go out.
QByteArray setClipboard(const QString &text, bool paste, std::uint64_t sequence);
/// At most 255 bytes of text go out.
QByteArray startApp(const QString &text);
/// Sizes in pixels, clamped to 0 to 65535.
QByteArray resizeDisplay(int width, int height);

QByteArray backDown();
QByteArray backUp();
QByteArray getClipboardCopy();
QByteArray getClipboardCut();
QByteArray resetVideo();
} // namespace ScrcpyControl

} // namespace quillnest
