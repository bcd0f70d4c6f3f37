#include "core/LoginItem.h"

#include "base/QuillnestSettings.h"

namespace quillnest::LoginItem
{

namespace
{
const auto defaultedKey = QStringLiteral("Quillnest.loginItemDefaulted");
}

void enableByDefaultOnce(const Platform &platform)
{
    if (QuillnestSettings::flag(*platform.settings, defaultedKey, false))
        return;
    platform.settings->setValue(defaultedKey, true);
    if (platform.loginItems->status() != LoginItems::Status::Enabled)
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
