#pragma once

#include "core/AppLibraryStore.h"
#include "core/CoreSettings.h"
#include "core/LibraryFormat.h"
#include "fakes/FakePlatform.h"
#include "runtime/AndroidRuntimeCLI.h"
#include "runtime/AndroidRuntimeProvisioner.h"
#include "windows/AndroidWindowRegistry.h"

#include <vector>

namespace quillnest
{

/// A store as the program makes it, on a platform of fakes whose settings hold a library.
struct StoreRig {
    StoreRig(const FakePlatform &fakes, const std::vector<MobileApp> &library)
        : log(std::make_shared<QuillnestLog>(
            fakes.clock, fakes.platform.folders.logs, QStringLiteral("quillnest.log"), false))
        , runtime(fakes.platform, log)
        , windows(WindowServices{fakes.platform, log, notifications, runtime.commands()})
        , provisioner(fakes.platform)
    {
        fakes.settings->setValue(CoreSettings::apps.key(), LibraryFormat::encode(library));
        store = std::make_unique<AppLibraryStore>(AppLibraryStore::Services{
            fakes.platform, log, notifications, runtime, windows, provisioner, deviceCleaned});
        fakes.settle();
    }

    const std::shared_ptr<QuillnestLog> log;
    const std::shared_ptr<ChangeNotifications> notifications = std::make_shared<ChangeNotifications>();
    const Completion<> deviceCleaned = endedCompletion();
    AndroidRuntimeCLI runtime;
    AndroidWindowRegistry windows;
    AndroidRuntimeProvisioner provisioner;
    std::unique_ptr<AppLibraryStore> store;
};

} // namespace quillnest
