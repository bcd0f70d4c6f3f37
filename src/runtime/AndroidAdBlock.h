#pragma once

#include "platform/SettingsStore.h"

#include <QString>

namespace quillnest
{

class AndroidCommands;

/// Ad blocking by means of a private DNS host inside Android.
namespace AndroidAdBlock
{
/// DNS-over-TLS host of the provider that is used unless the user picks another.
inline QString defaultHost()
{
    return QStringLiteral("dns.adguard-dns.com");
}

/// The host in the settings, or the default. Any thread.
QString host(const SettingsStore &settings);

/// Brings the device in line with the settings. Blocks for adb; never fails visibly.
void apply(const AndroidCommands &commands);
} // namespace AndroidAdBlock

} // namespace quillnest
