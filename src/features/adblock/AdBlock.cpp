#include "features/adblock/AdBlock.h"

#include "base/CommandDispatcher.h"
#include "features/adblock/AdBlockSettings.h"
#include "features/adblock/AndroidAdBlock.h"
#include "runtime/DeviceTweaks.h"

namespace quillnest
{

AdBlock::AdBlock(DeviceTweaks &device, SettingsStore &settings, CommandDispatcher &commands)
{
    const auto tweak = device.add(
        {.stage = DeviceTweaks::Stage::network,
         .apply = &AndroidAdBlock::apply,
         .settings = {AdBlockSettings::enabled.key(), AdBlockSettings::host.key()}});
    const auto set = [&device, &settings, tweak](bool on) {
        AdBlockSettings::enabled.set(settings, on);
        // Also when the setting was so before: whoever asks may have changed the device by hand.
        device.apply(tweak);
    };
    commands.handle(QStringLiteral("adblock-on"), [set](const QString &) { set(true); });
    commands.handle(QStringLiteral("adblock-off"), [set](const QString &) { set(false); });
}

} // namespace quillnest
