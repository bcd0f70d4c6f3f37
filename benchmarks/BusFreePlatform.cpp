#include "benchmarks/BusFreePlatform.h"

#include "platform/desktop/FFmpegStillDecoder.h"
#include "platform/desktop/QtClock.h"
#include "platform/desktop/QtExecutor.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/PosixChildProcesses.h"
#include "platform/linux/PulseAudioEngine.h"

namespace quillnest::bench
{

Platform busFreePlatform()
{
    Platform platform;
    platform.profile = HostProfile::linuxX86_64();
    platform.folders = linuxFolders();
    platform.clock = std::make_shared<QtClock>();
    platform.executor = std::make_shared<QtExecutor>();
    platform.settings = linuxSettings();
    platform.processes = std::make_shared<PosixChildProcesses>();
    platform.video = std::make_shared<FFmpegVideoDecoding>();
    platform.audio = std::make_shared<PulseAudioOutput>();
    return platform;
}

} // namespace quillnest::bench
