#pragma once

#include "core/AppLibraryStore.h"
#include "runtime/AndroidRuntimeProvisioner.h"
#include "windows/AndroidWindowRegistry.h"

#include <QJsonObject>

namespace quillnest
{

/// What the program is doing, for scripts and tests: the library, what the interface shows, where the first download
/// stands, and for each window its frame and the counters of its stream. Times in seconds and milliseconds as their
/// names say. Main thread.
QJsonObject diagnosticsReport(
    const AppLibraryStore &store, const AndroidWindowRegistry &windows, const AndroidRuntimeProvisioner &provisioner);

} // namespace quillnest
