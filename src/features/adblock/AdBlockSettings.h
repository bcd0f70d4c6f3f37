#pragma once

#include "base/Setting.h"

namespace quillnest
{

/// The settings of the ad blocker.
namespace AdBlockSettings
{
inline constexpr Setting<bool> enabled{"QuillnestAdBlock", true, "ads and trackers are blocked in all Android apps"};
/// The default is the first provider's DNS-over-TLS host.
inline constexpr Setting<QString> host{
    "QuillnestAdBlockHost", "dns.adguard-dns.com", "private DNS host that does the blocking"};

inline QList<SettingDeclaration> all()
{
    return declarations(enabled, host);
}
} // namespace AdBlockSettings

} // namespace quillnest
