#pragma once

#include "base/AppLocking.h"
#include "base/ChangeNotifications.h"
#include "base/MobileApp.h"
#include "base/QuillnestLog.h"
#include "platform/Platform.h"
#include "platform/Tasks.h"
#include "runtime/AndroidRuntimeCLI.h"
#include "runtime/AndroidRuntimeProvisioner.h"
#include "windows/AndroidWindowRegistry.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QSet>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace quillnest
{

/// The one observable object of the process: the library of apps, the state that the interface shows about Android,
/// and the operations that change them. Made once; lives as long as the process. Main thread.
class AppLibraryStore : public QObject
{
    Q_OBJECT

public:
    enum class AndroidState { ready, starting, sleeping, notSetUp };

    struct Services {
        Platform platform;
        std::shared_ptr<QuillnestLog> log;
        std::shared_ptr<ChangeNotifications> notifications;
        AndroidRuntimeCLI &runtime;
        AndroidWindowRegistry &windows;
        AndroidRuntimeProvisioner &provisioner;
        /// Ends when a device that an earlier run left has been cleaned: an app that was opened before would be stopped
        /// with the rest, so launches wait.
        const Completion<> &deviceCleaned;
        std::shared_ptr<AppLocking> locks = std::make_shared<NoAppLocking>();
    };

    explicit AppLibraryStore(Services services);
    ~AppLibraryStore() override;

    // What the interface shows. Every change is announced by `changed`.
    const std::vector<MobileApp> &apps() const { return m_apps; }
    QString search() const { return m_search; }
    void setSearch(const QString &text);
    QString statusMessage() const { return m_statusMessage; }
    AndroidState androidState() const { return m_androidState; }
    /// The title of the player window.
    QString activeAndroidName() const { return QStringLiteral("Android App"); }
    std::optional<QUuid> launchingAppID() const { return m_launchingAppID; }
    const QSet<QUuid> &runningAppIDs() const { return m_runningAppIDs; }
    const QSet<QUuid> &unreadAppIDs() const { return m_unreadAppIDs; }
    const std::optional<AndroidMedia> &nowPlaying() const { return m_nowPlaying; }
    std::optional<QUuid> nowPlayingAppID() const { return m_nowPlayingAppID; }

    /// Favourites and then the others, each sorted by display name.
    std::vector<MobileApp> orderedApps() const;
    /// All of them, sorted by display name alone.
    std::vector<MobileApp> appsByName() const;
    /// Whether the app's name contains the search text; an empty one is contained in every name.
    bool matchesSearch(const MobileApp &app) const;
    /// In stored order, the apps that match the search.
    std::vector<MobileApp> filteredApps() const;
    /// The first entry whose name contains the text; an empty text is contained in none.
    std::optional<MobileApp> firstMatch(const QString &query) const;
    /// The same, looking at the path as well.
    std::optional<MobileApp> firstMatchInNameOrPath(const QString &text) const;

    /// Adds package files, one after the other; their labels are read in the background.
    void addFiles(const QList<QUrl> &urls);
    void replaceSource(QUuid id, const QUrl &url, const QString &package);
    /// Takes the entry out of the library. The app stays on the device and the file on this machine.
    void remove(const MobileApp &app);
    /// Asks, and then removes the app from the device and the entry from the library.
    void confirmUninstall(const MobileApp &app);
    void toggleFavorite(const MobileApp &app);

    /// What one click on an app does, for all callers.
    void launch(const MobileApp &app);
    /// Closes the app's window, if it has one.
    void close(const MobileApp &app);
    /// Starts Android before the user asks for it.
    void prewarmAndroid();
    /// What the diagnostic pictures show; an empty function leaves its picture out.
    std::function<QImage()> paintPanel;
    std::function<QImage()> paintGlyph;
    /// Writes the panel and the glyph as PNG files into the folder "snapshots" beside the log.
    void writeMenuSnapshot() const;

    /// Makes another Android version the one that apps run on: closes all windows and lets the device go down in the
    /// background. The library stays; what isn't installed there is installed by its next launch.
    void switchAndroidVersion(int api);
    /// Removes the files of a version other than the selected one, in the background. Shared tools stay.
    void deleteAndroidVersion(int api);

    /// Asks the device and sets `androidState`; never overrides a start in progress.
    void refreshAndroidState();

Q_SIGNALS:
    void changed();

private:
    // AppLibraryStore.cpp
    void load();
    /// Makes `apps` the library, on disk and here. If that can't be written the old library stays, and the user is
    /// told.
    bool save(std::vector<MobileApp> apps);
    /// Changes one entry, if there is one of that id, and saves.
    void change(QUuid id, const std::function<void(MobileApp &)> &edit);
    bool erase(QUuid id);
    const MobileApp *find(QUuid id) const;
    bool hasSource(const QString &path) const;
    std::vector<MobileApp> sortedApps(bool favouritesFirst) const;
    void setStatus(const QString &message);
    void setAndroidState(AndroidState state);
    Task<> addAll(QList<QUrl> urls);
    Task<> addPackage(QString path, MobilePlatform platform);
    Task<> uninstall(MobileApp app, QString package);

    // AndroidVersionSwitch.cpp
    Task<> removeVersion(int api);

    // AndroidLaunch.cpp
    void launchAndroid(const MobileApp &app);
    Task<> runLaunch(MobileApp app, std::chrono::nanoseconds openedAt);
    void openWindow(const MobileApp &app, const QString &package, std::chrono::nanoseconds openedAt);
    void launchFailed(const MobileApp &app, const QString &description);
    void clearLaunching(QUuid id);
    Task<> runPrewarm();
    Task<> runRefresh();

    const Services m_services;
    std::vector<MobileApp> m_apps;
    QString m_search;
    QString m_statusMessage = QStringLiteral("Ready");
    AndroidState m_androidState = AndroidState::sleeping;
    std::optional<QUuid> m_launchingAppID;
    QSet<QUuid> m_runningAppIDs;
    QSet<QUuid> m_unreadAppIDs;
    std::optional<AndroidMedia> m_nowPlaying;
    std::optional<QUuid> m_nowPlayingAppID;
    bool m_prewarming = false;
};

} // namespace quillnest
