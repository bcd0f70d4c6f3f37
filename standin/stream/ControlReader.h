#pragma once

#include "device/Device.h"
#include "stream/DeviceMessages.h"
#include "stream/SessionSocket.h"
#include "stream/StreamOptions.h"
#include "stream/VideoSender.h"

#include <functional>

namespace standin
{

/// Reads a session's control messages and does what they say. All numbers are big-endian, and a message's length
/// follows from its type. `run` is one thread's.
class ControlReader
{
public:
    struct Parts {
        Device &device;
        std::shared_ptr<Display> display;
        const StreamOptions &options;
        SessionSocket &socket;
        DeviceMessages &messages;
        VideoSender &video;
        int clipboardAuthor = 0; ///< what the session's own changes of the clipboard are marked with
        std::function<void(const QString &)> log;
    };
    enum class End { closed, badMessage, fault };

    explicit ControlReader(Parts parts);
    End run();

private:
    // Each reads its message's body; false at the end of the socket or for a body that makes no sense.
    bool key();
    bool text();
    bool touch();
    bool scroll();
    bool back();
    bool getClipboard();
    bool setClipboard();
    bool startApp();
    bool resizeDisplay();

    bool handle(int type);
    std::optional<QByteArray> read(qsizetype size);
    /// A text behind its length in so many bytes.
    std::optional<QString> readText(qsizetype lengthBytes, quint32 limit);
    bool fail(const QString &words);

    Parts m_parts;
    qint64 m_received = 0;
    bool m_isBad = false;
    bool m_faulted = false;
};

} // namespace standin
