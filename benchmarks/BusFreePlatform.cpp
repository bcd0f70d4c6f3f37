#include "benchmarks/BusFreePlatform.h"

#include "platform/HostPlatform.h"
#include "platform/desktop/FFmpegStillDecoder.h"
#include "platform/desktop/QtClock.h"
#include "platform/desktop/QtExecutor.h"

namespace quillnest::bench
{

Platform busFreePlatform()
{
    Platform platform;
    platform.profile = hostProfile();
    platform.folders = hostFolders();
    platform.clock = std::make_shared<QtClock>();
    platform.executor = std::make_shared<QtExecutor>();
    platform.settings = hostSettings();
    platform.processes = hostChildProcesses();
    platform.sockets = hostSockets();
    platform.video = std::make_shared<FFmpegVideoDecoding>();
    platform.audio = hostAudio();
    return platform;
}

} // namespace quillnest::bench
