#pragma once

#include "base/ChangeNotifications.h"
#include "base/QuillnestLog.h"
#include "core/AppLibraryStore.h"
#include "core/CommandDispatcher.h"
#include "platform/Platform.h"
#include "runtime/AndroidRuntimeCLI.h"
#include "windows/AndroidWindowRegistry.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

class QWidget;

namespace quillnest
{

/// The application: owns the one store and everything that it stands on, in the order in which they depend on each
/// other, and runs the steps of start and of the end. Main thread.
class QuillnestApp : public QObject
{
    Q_OBJECT

public:
    explicit QuillnestApp(Platform platform);
    ~QuillnestApp() override;

    AppLibraryStore &store() { return *m_store; }
    AndroidWindowRegistry &windows() { return m_windows; }
    const Platform &platform() const { return m_platform; }

    /// The steps from here until the status item stands, with the process's arguments.
    void start(const QStringList &arguments, std::function<QWidget *()> makePanel);

    /// Closes all windows and, unless the settings keep it, stops the device and waits for that.
    void terminate();

    /// One of the program's windows got the keyboard.
    void windowDidBecomeKey() { m_store->prewarmAndroid(); }

private:
    void endHostSideServers();
    Task<> cleanDevice();
    Task<> launchAPK(QString path);

    const Platform m_platform;
    const std::shared_ptr<QuillnestLog> m_log;
    const std::shared_ptr<ChangeNotifications> m_notifications;
    AndroidRuntimeCLI m_runtime;
    AndroidWindowRegistry m_windows;
    const AppLibraryStore::Services m_services;
    std::unique_ptr<AppLibraryStore> m_store;
    std::unique_ptr<CommandDispatcher> m_commands;
    bool m_terminated = false;
};

} // namespace quillnest
