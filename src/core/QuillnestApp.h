#pragma once

#include "base/ChangeNotifications.h"
#include "base/CommandDispatcher.h"
#include "base/QuillnestLog.h"
#include "core/AppLibraryStore.h"
#include "package/AppIconStore.h"
#include "platform/Platform.h"
#include "runtime/AndroidRuntimeCLI.h"
#include "runtime/AndroidRuntimeProvisioner.h"
#include "windows/AndroidAppPanel.h"
#include "windows/AndroidWindowRegistry.h"

#include <QJsonArray>
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
    /// What the rooms above fill in.
    struct Interface {
        /// A new launcher.
        std::function<QWidget *()> makePanel;
        /// The diagnostic pictures.
        std::function<QImage()> paintPanel;
        std::function<QImage()> paintGlyph;
        /// The tiles of the launcher that are on the screen, for the diagnostic report.
        std::function<QJsonArray()> reportTiles{};
        /// Ends the program by way of `terminate`.
        std::function<void()> quit;
    };

    explicit QuillnestApp(Platform platform);
    ~QuillnestApp() override;

    AppLibraryStore &store() { return *m_store; }
    AppIconStore &icons() { return m_icons; }
    AndroidWindowRegistry &windows() { return m_windows; }
    AndroidRuntimeProvisioner &provisioner() { return m_provisioner; }
    const Platform &platform() const { return m_platform; }
    const std::shared_ptr<AppLocking> &locks() const { return m_locks; }
    std::shared_ptr<const AndroidCommands> android() const { return m_runtime.commands(); }

    // Where features and the rooms above attach, before the start.
    DeviceTweaks &device() const { return m_runtime.tweaks(); }
    CommandDispatcher &commands() { return m_commands; }

    /// The steps from here until the status item stands, with the process's arguments.
    void start(const QStringList &arguments, Interface interface);

    /// The player window, while it is open.
    AndroidAppPanel *playerWindow() const { return m_player.get(); }

    /// Closes all windows and, unless the settings keep it, stops the device and waits for that.
    void terminate();

    /// One of the program's windows got the keyboard.
    void windowDidBecomeKey() { m_store->prewarmAndroid(); }

private:
    void takeOrders(const QStringList &arguments, const QString &folder);
    void obey(const QStringList &arguments, const QString &folder);
    void addFiles(const QStringList &files);
    void openPlayer();
    void openApp(const QString &text);
    void tellOfDamagedSettings(const QString &path);
    void later(std::chrono::milliseconds delay, std::function<void()> work);
    void endHostSideServers();
    Task<> cleanDevice();
    void followHardwareSettings();
    Task<> launchAPK(QString path);

    const Platform m_platform;
    const std::shared_ptr<QuillnestLog> m_log;
    AppIconStore m_icons;
    const std::shared_ptr<ChangeNotifications> m_notifications;
    AndroidRuntimeCLI m_runtime;
    AndroidRuntimeProvisioner m_provisioner;
    const std::shared_ptr<AppLocking> m_locks;
    const WindowServices m_windowServices;
    AndroidWindowRegistry m_windows;
    CommandDispatcher m_commands;
    Completion<> m_deviceCleaned;
    const AppLibraryStore::Services m_services;
    std::unique_ptr<AppLibraryStore> m_store;
    Interface m_interface;
    std::unique_ptr<AndroidAppPanel> m_player;
    bool m_terminated = false;
};

} // namespace quillnest
