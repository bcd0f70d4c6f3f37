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
    const auto tweak = device.add(
        {.stage = DeviceTweaks::Stage::appearance,
         .apply = &AndroidDarkMode::apply,
         .settings = {DarkModeSettings::sync.key()}});
    const auto &platform = commands->platform();
    // An app that is opened may find a device whose appearance somebody has changed in Android itself.
    connect(&windows, &SessionEvents::opened, this, [&device, tweak] { device.apply(tweak); });
    if (!platform.appearance)
        return;
    connect(platform.appearance.get(), &Appearance::changed, this, [this, &device, clock = platform.clock, tweak] {
        clock->later(settlingTime, [self = QPointer<DarkMode>(this), &device, tweak] {
            if (self)
                device.apply(tweak);
        });
    });
}

} // namespace quillnest
