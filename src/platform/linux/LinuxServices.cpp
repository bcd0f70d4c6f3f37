#include "platform/HostServices.h"
#include "platform/linux/BaseFolders.h"
#include "platform/linux/DBusCommandChannel.h"
#include "platform/linux/DBusDiagnostics.h"
#include "platform/posix/FileSettingsStore.h"
#include "platform/posix/PosixChildProcesses.h"
#include "platform/posix/PosixLocalSockets.h"

#include <QCoreApplication>
#include <QDir>

// Settings lie in "$XDG_CONFIG_HOME/Quillnest/settings.json", data in "$XDG_DATA_HOME/Quillnest", logs in
// "$XDG_STATE_HOME/Quillnest/Logs"; the bundle is "share/quillnest" beside the folder of the executable.

namespace quillnest
{

HostProfile hostProfile()
{
    return HostProfile::linuxX86_64();
}

Folders hostFolders()
{
    return {
        .home = QDir::homePath(),
        .applicationSupport = baseFolder("XDG_DATA_HOME", QStringLiteral("/.local/share")),
        .logs = baseFolder("XDG_STATE_HOME", QStringLiteral("/.local/state")) + QStringLiteral("/Quillnest/Logs"),
        .temporary = QDir::tempPath(),
        .bundle = QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../share/quillnest")),
    };
}

std::shared_ptr<SettingsStore> hostSettings()
{
    return std::make_shared<FileSettingsStore>(configFolder() + QStringLiteral("/Quillnest/settings.json"));
}

std::shared_ptr<ChildProcesses> hostChildProcesses()
{
    return std::make_shared<PosixChildProcesses>();
}

std::shared_ptr<LocalSockets> hostSockets()
{
    return std::make_shared<PosixLocalSockets>();
}

std::shared_ptr<CommandChannel> hostCommandChannel()
{
    return std::make_shared<DBusCommandChannel>();
}

std::shared_ptr<DiagnosticsPort> hostDiagnostics()
{
    return std::make_shared<DBusDiagnostics>();
}

} // namespace quillnest
