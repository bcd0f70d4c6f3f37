#include "core/LoginItem.h"

#include "core/CoreSettings.h"

namespace quillnest::LoginItem
{

namespace
{
}

void enableByDefaultOnce(const Platform &platform)
{
    if (CoreSettings::loginItemDefaulted.value(*platform.settings))
        return;
    CoreSettings::loginItemDefaulted.set(*platform.settings, true);
    if (platform.loginItems->status() != LoginItems::Status::enabled)
        set(platform, true);
}

std::optional<QString> set(const Platform &platform, bool enabled)
{
    const auto failure = platform.loginItems->set(enabled);
    if (!failure)
        return std::nullopt;
    return QStringLiteral("%1 did not allow this: %2").arg(platform.profile.systemName, *failure);
}

} // namespace quillnest::LoginItem
