#include "stream/DeviceMessageReader.h"

#include "stream/BigEndian.h"

#include <QTextBoundaryFinder>

#include <array>
#include <mutex>
#include <optional>
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

/// The newest text of the device on its way to the main thread, and the pause between two of them.
class DeviceMessageReader::ClipboardSlot : public std::enable_shared_from_this<ClipboardSlot>
{
public:
    ClipboardSlot(const Platform &platform, std::shared_ptr<QuillnestLog> log)
        : m_platform(platform), m_log(std::move(log))
    {
    }

    /// The reader's thread.
    void put(const QString &text)
    {
        if (text.isEmpty())
            return;
        Entry entry{text, graphemeCount(text)};
        {
            const std::scoped_lock guard(m_lock);
            m_newest = std::move(entry);
            // Somebody is on the way to take it.
            if (std::exchange(m_isAwaited, true))
                return;
        }
        m_platform.executor->onMain([weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->takeInTime();
        });
    }

private:
    struct Entry {
        QString text;
        int length = 0;
    };

    // The main thread.

    void takeInTime()
    {
        const auto next = m_lastTaken ? *m_lastTaken + clipboardPause : std::chrono::nanoseconds(0);
        const auto now = m_platform.clock->monotonic();
        if (now >= next)
            return take();
        m_platform.clock->later(std::chrono::ceil<Clock::Duration>(next - now), [weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->take();
        });
    }

    void take()
    {
        Entry entry;
        {
            const std::scoped_lock guard(m_lock);
            m_isAwaited = false;
            entry = std::exchange(m_newest, {});
        }
        m_lastTaken = m_platform.clock->monotonic();
        if (m_platform.pasteboard->string() == entry.text)
            return;
        m_platform.pasteboard->setString(entry.text);
        m_log->write(QStringLiteral("Quillnest: Android clipboard copied to Mac (%1 chars)").arg(entry.length));
    }

    const Platform m_platform;
    const std::shared_ptr<QuillnestLog> m_log;
    /// Guards the two below.
    std::mutex m_lock;
    Entry m_newest;
    bool m_isAwaited = false;
    /// The main thread's own.
    std::optional<std::chrono::nanoseconds> m_lastTaken;
};

DeviceMessageReader::DeviceMessageReader(const Platform &platform, std::shared_ptr<QuillnestLog> log)
    : m_slot(std::make_shared<ClipboardSlot>(platform, std::move(log)))
{
}

DeviceMessageReader::~DeviceMessageReader() = default;

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
            m_slot->put(QString::fromUtf8(
                reinterpret_cast<const char *>(bytes->data()), static_cast<qsizetype>(bytes->size())));
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
