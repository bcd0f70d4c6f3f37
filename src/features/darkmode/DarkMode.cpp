#include "features/darkmode/DarkMode.h"

#include "features/darkmode/AndroidDarkMode.h"
#include "features/darkmode/DarkModeSettings.h"
#include "runtime/DeviceTweaks.h"
#include "windows/AppSession.h"
#include "windows/SessionEvents.h"

#include <QPointer>

namespace quillnest
{

namespace
{
/// The host's preference takes a moment to follow its notification.
constexpr std::chrono::milliseconds settlingTime{400};
} // namespace

DarkMode::DarkMode(
    DeviceTweaks &device, const std::shared_ptr<const AndroidCommands> &commands, const SessionEvents &windows)
{
    device.add(
        {.stage = DeviceTweaks::Stage::appearance,
         .apply = &AndroidDarkMode::apply,
         .settings = {DarkModeSettings::sync.key()}});
    const auto &platform = commands->platform();
    // An app that is opened may find a device whose appearance somebody has changed in Android itself.
    connect(&windows, &SessionEvents::opened, this, [commands] {
        commands->platform().executor->asUtility([commands] { AndroidDarkMode::apply(*commands); });
    });
    if (!platform.appearance)
        return;
    connect(platform.appearance.get(), &Appearance::changed, this, [this, commands] {
        const auto apply = [commands] {
            if (commands->deviceIsBooted())
                AndroidDarkMode::apply(*commands);
        };
        const auto soon = [self = QPointer<DarkMode>(this), commands, apply] {
            if (self)
                commands->platform().executor->asUtility(apply);
        };
        commands->platform().clock->later(settlingTime, soon);
    });
}

} // namespace quillnest
