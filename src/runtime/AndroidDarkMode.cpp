#include "runtime/AndroidDarkMode.h"

#include "base/QuillnestSettings.h"
#include "runtime/AndroidCommands.h"

namespace quillnest
{

namespace
{
/// The host's preference takes a moment to follow its notification.
constexpr std::chrono::milliseconds settlingTime{400};

void applyIfBooted(const std::weak_ptr<const AndroidCommands> &observer)
{
    const auto commands = observer.lock();
    if (!commands)
        return;
    // The closure holds the commands, which hold the platform that runs it.
    commands->platform().executor->inBackground([commands] {
        if (commands->deviceIsBooted())
            AndroidDarkMode::apply(*commands);
    });
}
} // namespace

bool AndroidDarkMode::macIsDark(const Platform &platform)
{
    return platform.appearance && platform.appearance->isDark();
}

void AndroidDarkMode::apply(const AndroidCommands &commands)
{
    const auto &platform = commands.platform();
    if (!QuillnestSettings::flag(*platform.settings, QStringLiteral("QuillnestSyncDarkMode"), true))
        return;
    const auto night = macIsDark(platform) ? QStringLiteral("yes") : QStringLiteral("no");
    commands.runADB(
        {QStringLiteral("shell"), QStringLiteral("cmd"), QStringLiteral("uimode"), QStringLiteral("night"), night});
    commands.log().write(QStringLiteral("dark mode: android night=%1").arg(night));
}

QMetaObject::Connection AndroidDarkMode::startObserving(const std::shared_ptr<const AndroidCommands> &commands)
{
    const auto appearance = commands->platform().appearance;
    if (!appearance)
        return {};
    return QObject::connect(appearance.get(), &Appearance::changed, [observer = std::weak_ptr(commands)] {
        if (const auto alive = observer.lock())
            alive->platform().clock->later(settlingTime, [observer] { applyIfBooted(observer); });
    });
}

} // namespace quillnest
