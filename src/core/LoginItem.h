#pragma once

#include "platform/Platform.h"

#include <QString>

#include <optional>

namespace quillnest
{

/// Whether the program starts with the user's session. Main thread.
namespace LoginItem
{
/// Switches the login item on the first time that the program ever runs, and never again: whoever switches it off is
/// left alone.
void enableByDefaultOnce(const Platform &platform);

/// Switches it on or off; a failure gives a sentence for the user.
std::optional<QString> set(const Platform &platform, bool enabled);
} // namespace LoginItem

} // namespace quillnest
