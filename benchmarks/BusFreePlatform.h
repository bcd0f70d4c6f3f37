#pragma once

#include "platform/Platform.h"

namespace quillnest::bench
{

/// What the rooms below the windows need of the host, and nothing that goes by the session bus: this process changes
/// from one test desktop to the next, and can't change its bus with them.
Platform busFreePlatform();

} // namespace quillnest::bench
