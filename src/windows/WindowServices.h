#pragma once

#include "base/AppLocking.h"
#include "base/ChangeNotifications.h"
#include "base/QuillnestLog.h"
#include "platform/Platform.h"
#include "runtime/AndroidCommands.h"
#include "stream/StreamThreads.h"
#include "windows/FileTransfer.h"

#include <memory>

namespace quillnest
{

/// What the windows need of the rooms below them. Outlives every window.
struct WindowServices {
    Platform platform;
    std::shared_ptr<QuillnestLog> log;
    std::shared_ptr<ChangeNotifications> notifications;
    std::shared_ptr<const AndroidCommands> commands;
    std::shared_ptr<AppLocking> locks = std::make_shared<NoAppLocking>();
    /// Null: dropped files are refused.
    std::shared_ptr<FileTransfer> fileTransfer{};
    /// Where the windows' streams run.
    std::shared_ptr<StreamThreads> streamThreads = std::make_shared<StreamThreads>();
};

} // namespace quillnest
