#include "stream/AndroidStreamClient.h"

#include <QTextBoundaryFinder>

#include <array>

// What the device sends on the control socket: a type byte, and a body whose length follows from it.

namespace quillnest
{

namespace
{

constexpr std::uint8_t clipboardMessage = 0;
constexpr std::uint8_t clipboardAcknowledgement = 1;
constexpr std::uint8_t hidOutput = 2;
constexpr std::uint32_t longestClipboard = 0x7FFFFF;

int graphemeCount(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    int count = 0;
    while (finder.toNextBoundary() >= 0)
        ++count;
    return count;
}

} // namespace

void AndroidStreamClient::drainDeviceMessages()
{
    const auto socket = controlSocket();
    if (!socket)
        return;
    while (const auto type = socket->readExactly(1)) {
        switch ((*type)[0]) {
        case clipboardMessage: {
            const auto length = socket->readExactly(4);
            if (!length || readBE(*length, 0) > longestClipboard)
                return;
            const auto bytes = socket->readExactly(readBE(*length, 0));
            if (!bytes)
                return;
            const auto text = QString::fromUtf8(
                reinterpret_cast<const char *>(bytes->data()), static_cast<qsizetype>(bytes->size()));
            onMain([weak = weak_from_this(), text] {
                if (const auto self = weak.lock())
                    self->androidClipboardChanged(text);
            });
            break;
        }
        case clipboardAcknowledgement:
            if (!socket->readExactly(8))
                return;
            break;
        case hidOutput: {
            const auto head = socket->readExactly(4);
            if (!head)
                return;
            const auto size = static_cast<std::size_t>((*head)[2] << 8 | (*head)[3]);
            if (!socket->readExactly(size))
                return;
            break;
        }
        default:
            return;
        }
    }
}

void AndroidStreamClient::androidClipboardChanged(const QString &text) const
{
    if (text.isEmpty() || m_platform.pasteboard->string() == text)
        return;
    m_platform.pasteboard->setString(text);
    m_log->write(QStringLiteral("Quillnest: Android clipboard copied to Mac (%1 chars)").arg(graphemeCount(text)));
}

} // namespace quillnest
