#pragma once

#include "platform/Platform.h"

#include <QMetaObject>

#include <memory>

namespace quillnest
{

class AndroidCommands;

/// Night mode of the device, which follows the host's appearance.
namespace AndroidDarkMode
{
/// Whether the host's appearance is dark. Any thread.
bool macIsDark(const Platform &platform);

/// Brings the device in line with the host, if the settings say so. Blocks for adb; never fails visibly.
void apply(const AndroidCommands &commands);

/// From now on, each change of the host's appearance is applied to a booted device, for as long as `commands` lives or
/// until the connection is cut. Called once at start, on the main thread.
QMetaObject::Connection startObserving(const std::shared_ptr<const AndroidCommands> &commands);
} // namespace AndroidDarkMode

} // namespace quillnest
