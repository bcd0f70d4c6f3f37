#pragma once

#include "platform/Alerts.h"
#include "platform/Appearance.h"
#include "platform/Archives.h"
#include "platform/AudioEngine.h"
#include "platform/Canvas.h"
#include "platform/ChildProcesses.h"
#include "platform/Clock.h"
#include "platform/CommandChannel.h"
#include "platform/DiagnosticsPort.h"
#include "platform/Executor.h"
#include "platform/FileManager.h"
#include "platform/FilePanels.h"
#include "platform/Folders.h"
#include "platform/ForeignWindows.h"
#include "platform/HostProfile.h"
#include "platform/InstanceDoor.h"
#include "platform/LocalSockets.h"
#include "platform/LoginItems.h"
#include "platform/Network.h"
#include "platform/Pasteboard.h"
#include "platform/SampleRenderer.h"
#include "platform/Screens.h"
#include "platform/SettingsStore.h"
#include "platform/StatusItems.h"
#include "platform/Symbols.h"

#include <memory>

namespace quillnest
{

/// Everything that the program asks of a host, in one look. Tests replace exactly one member.
struct Platform {
    HostProfile profile;
    Folders folders;
    std::shared_ptr<Clock> clock;
    std::shared_ptr<Executor> executor;
    std::shared_ptr<SettingsStore> settings;
    std::shared_ptr<ChildProcesses> processes;
    std::shared_ptr<InstanceDoor> door;
    std::shared_ptr<CommandChannel> commands;
    std::shared_ptr<DiagnosticsPort> diagnostics;
    std::shared_ptr<LocalSockets> sockets;
    std::shared_ptr<Network> network;
    std::shared_ptr<Archives> archives;
    std::shared_ptr<Pasteboard> pasteboard;
    std::shared_ptr<StatusItems> statusItems;
    std::shared_ptr<Screens> screens;
    std::shared_ptr<VideoDecoding> video;
    std::shared_ptr<AudioOutput> audio;
    std::shared_ptr<Symbols> symbols;
    std::shared_ptr<Drawing> drawing;
    std::shared_ptr<Alerts> alerts;
    std::shared_ptr<FilePanels> filePanels;
    std::shared_ptr<FileManager> fileManager;
    std::shared_ptr<LoginItems> loginItems;
    std::shared_ptr<ForeignWindows> foreignWindows;
    /// Null on a host that has none: light.
    std::shared_ptr<Appearance> appearance;
};

} // namespace quillnest
