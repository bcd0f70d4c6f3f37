#pragma once

#include "platform/ChildProcesses.h"
#include "platform/CommandChannel.h"
#include "platform/DiagnosticsPort.h"
#include "platform/Folders.h"
#include "platform/HostProfile.h"
#include "platform/LocalSockets.h"
#include "platform/SettingsStore.h"

#include <memory>

namespace quillnest
{

// The parts of the host that need no display: what command-line companions use. Each host's folder implements them for
// itself, and the build takes the one of the host that it builds for.

HostProfile hostProfile();
/// Where the host keeps a program's data, its logs and the files that came with it.
Folders hostFolders();
std::shared_ptr<SettingsStore> hostSettings();
std::shared_ptr<ChildProcesses> hostChildProcesses();
std::shared_ptr<LocalSockets> hostSockets();
std::shared_ptr<CommandChannel> hostCommandChannel();
std::shared_ptr<DiagnosticsPort> hostDiagnostics();

} // namespace quillnest
