#include "stream/DeviceMessageReader.h"

#include "stream/BigEndian.h"

#include <QTextBoundaryFinder>

#include <utility>

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

DeviceMessageReader::DeviceMessageReader(const Platform &platform, std::shared_ptr<QuillnestLog> log)
{
    auto take = [pasteboard = platform.pasteboard, log = std::move(log)](const Text &text) {
        if (pasteboard->string() == text.content)
            return;
        pasteboard->setString(text.content);
        log->write(QStringLiteral("Quillnest: Android clipboard copied to Mac (%1 chars)").arg(text.length));
    };
    m_texts = std::make_shared<NewestForMain<Text>>(platform, clipboardPause, std::move(take));
}

void DeviceMessageReader::read(StreamSocket &socket)
{
    while (const auto type = socket.readExactly(1)) {
        switch ((*type)[0]) {
        case clipboardMessage: {
            const auto length = socket.readExactly(4);
            if (!length || readBE(*length, 0) > longestClipboard)
                return;
            const auto bytes = socket.readExactly(readBE(*length, 0));
            if (!bytes)
                return;
            auto text = QString::fromUtf8(
                reinterpret_cast<const char *>(bytes->data()), static_cast<qsizetype>(bytes->size()));
            if (!text.isEmpty()) {
                const int count = graphemeCount(text);
                m_texts->put({std::move(text), count});
            }
            break;
        }
        case clipboardAcknowledgement:
            if (!socket.readExactly(8))
                return;
            break;
        case hidOutput: {
            const auto head = socket.readExactly(4);
            if (!head)
                return;
            const auto size = static_cast<std::size_t>((*head)[2] << 8 | (*head)[3]);
            if (!socket.readExactly(size))
                return;
            break;
        }
        default:
            return;
        }
    }
}

} // namespace quillnest
