#include "runtime/AndroidAdBlock.h"

#include "base/QuillnestSettings.h"
#include "runtime/AndroidCommands.h"

namespace quillnest
{

QString AndroidAdBlock::host(const SettingsStore &settings)
{
    return QuillnestSettings::text(settings, QStringLiteral("QuillnestAdBlockHost"), defaultHost());
}

void AndroidAdBlock::apply(const AndroidCommands &commands)
{
    const auto shell = [&commands](const QString &command) { commands.runADB({QStringLiteral("shell"), command}); };
    const auto &settings = *commands.platform().settings;
    if (!QuillnestSettings::flag(settings, QStringLiteral("QuillnestAdBlock"), true)) {
        shell(QStringLiteral("settings put global private_dns_mode opportunistic"));
        shell(QStringLiteral("settings delete global private_dns_specifier"));
        commands.log().write(QStringLiteral("ad blocker: off"));
        return;
    }
    const auto dnsHost = host(settings);
    shell(QStringLiteral("settings put global private_dns_mode hostname"));
    shell(QStringLiteral("settings put global private_dns_specifier ") + dnsHost);
    commands.log().write(QStringLiteral("ad blocker: on (%1)").arg(dnsHost));
}

} // namespace quillnest
