#pragma once

#include "base/QuillnestLog.h"
#include "platform/Platform.h"
#include "platform/StreamSocket.h"
#include "stream/NewestForMain.h"

#include <chrono>
#include <memory>

namespace quillnest
{

/// Reads what the device sends on the control socket: a type byte, and a body whose length follows from it. The
/// device's clipboard goes to this machine's, on the main thread; a device that floods it costs no more than one text
/// of memory and a few changes in a second, of which the newest always arrives. It touches the clipboard and the log,
/// and owns nothing of the connection.
class DeviceMessageReader
{
public:
    /// Texts that come faster than this replace each other.
    static constexpr std::chrono::milliseconds clipboardPause{200};

    DeviceMessageReader(const Platform &platform, std::shared_ptr<QuillnestLog> log);

    /// Reads until the socket ends or brings what nobody understands. Blocks; called once, on a thread of its own. What
    /// was read and hasn't reached the clipboard when the reader goes doesn't reach it any more.
    void read(StreamSocket &socket);

private:
    struct Text {
        QString content;
        /// In characters as a user counts them.
        int length = 0;
    };

    std::shared_ptr<NewestForMain<Text>> m_texts;
};

} // namespace quillnest
