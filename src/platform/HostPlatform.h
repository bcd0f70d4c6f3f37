#pragma once

#include "platform/HostServices.h"
#include "platform/Platform.h"

namespace quillnest
{

/// The real platform of the host that this is built for. Needs a QGuiApplication; made on the main thread.
/// QUILLNEST_SDK_REPOSITORY in the environment is the address of a folder of SDK package lists in place of Google's.
Platform hostPlatform();

/// The door alone, which is entered before anything of the user's is read: a start that only hands its arguments over
/// must not, for instance, put damaged settings aside.
std::shared_ptr<InstanceDoor> hostDoor();

// Some of its parts alone.
std::shared_ptr<AudioOutput> hostAudio();
std::shared_ptr<Symbols> hostSymbols();

} // namespace quillnest
