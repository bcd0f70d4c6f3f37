#pragma once

#include "platform/HostServices.h"
#include "platform/Platform.h"

namespace quillnest
{

/// The real platform of the host that this is built for. Needs a QGuiApplication; made on the main thread.
/// QUILLNEST_SDK_REPOSITORY in the environment is the address of a folder of SDK package lists in place of Google's.
Platform hostPlatform();

// Some of its parts alone.
std::shared_ptr<AudioOutput> hostAudio();
std::shared_ptr<Symbols> hostSymbols();

} // namespace quillnest
