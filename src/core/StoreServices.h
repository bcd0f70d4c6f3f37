#pragma once

#include "base/AppLocking.h"
#include "base/ChangeNotifications.h"
#include "base/QuillnestLog.h"
#include "platform/Platform.h"
#include "platform/Tasks.h"

#include <memory>

namespace quillnest
{

class AndroidRuntimeCLI;
class AndroidRuntimeProvisioner;
class AndroidWindowRegistry;

/// What the store and its parts stand on. Outlives them.
struct StoreServices {
    Platform platform;
    std::shared_ptr<QuillnestLog> log;
    std::shared_ptr<ChangeNotifications> notifications;
    AndroidRuntimeCLI &runtime;
    AndroidWindowRegistry &windows;
    AndroidRuntimeProvisioner &provisioner;
    /// Ends when a device that an earlier run left has been cleaned: an app that was opened before would be stopped
    /// with the rest, so launches wait.
    const Completion<> &deviceCleaned;
    std::shared_ptr<AppLocking> locks = std::make_shared<NoAppLocking>();
};

} // namespace quillnest
