#pragma once

#include "base/AppLocking.h"
#include "core/AppLibraryStore.h"
#include "package/AppIconStore.h"
#include "platform/Platform.h"
#include "windows/AndroidWindowRegistry.h"

#include <functional>
#include <memory>

class QWidget;

namespace quillnest
{

/// What a panel shows and calls. Outlives the panels that are made with it.
struct PanelServices {
    Platform platform;
    AppLibraryStore &store;
    AppIconStore &icons;
    AndroidWindowRegistry &windows;
    std::shared_ptr<AppLocking> locks = std::make_shared<NoAppLocking>();
    /// What stands in place of the apps while Android isn't set up; made when it is first needed. With none the apps
    /// stay.
    std::function<QWidget *(QWidget *parent)> makeSetupView = {};
    std::function<void()> quit = {};
};

} // namespace quillnest
