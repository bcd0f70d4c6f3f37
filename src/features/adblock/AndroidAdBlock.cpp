#include "features/adblock/AndroidAdBlock.h"

#include "features/adblock/AdBlockSettings.h"
#include "runtime/AndroidCommands.h"

namespace quillnest
{

void AndroidAdBlock::apply(const AndroidCommands &commands)
{
    const auto shell = [&commands](const QString &command) { commands.runADB({QStringLiteral("shell"), command}); };
    const auto &settings = *commands.platform().settings;
    if (!AdBlockSettings::enabled.value(settings)) {
        shell(QStringLiteral("settings put global private_dns_mode opportunistic"));
        shell(QStringLiteral("settings delete global private_dns_specifier"));
        commands.log().write(QStringLiteral("ad blocker: off"));
        return;
    }
    const auto host = AdBlockSettings::host.value(settings);
    shell(QStringLiteral("settings put global private_dns_mode hostname"));
    shell(QStringLiteral("settings put global private_dns_specifier ") + host);
    commands.log().write(QStringLiteral("ad blocker: on (%1)").arg(host));
}

} // namespace quillnest
