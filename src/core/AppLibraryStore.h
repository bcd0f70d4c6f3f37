#pragma once

#include "base/AppLibrary.h"
#include "core/AndroidLaunch.h"
#include "core/AndroidStatus.h"
#include "core/AndroidVersionSwitch.h"
#include "core/AppImport.h"
#include "core/AppUninstall.h"
#include "core/StatusLine.h"
#include "core/StoreServices.h"
#include "core/StoredLibrary.h"
#include "windows/AndroidMedia.h"

#include <QImage>
#include <QSet>

#include <functional>
#include <optional>
#include <vector>

namespace quillnest
{

/// The one observable object of the process: the library of apps, the state that the interface shows about Android,
/// and the operations that change them. It puts together parts that each do one thing and know nothing of the others.
/// Made once; lives as long as the process. Main thread.
class AppLibraryStore : public AppLibrary
{
    Q_OBJECT

public:
    using AndroidState = AndroidStatus::State;
    using Services = StoreServices;

    explicit AppLibraryStore(Services services);
    ~AppLibraryStore() override;

    // What the interface shows.
    const std::vector<MobileApp> &apps() const override { return m_library.apps(); }
    QString search() const { return m_search; }
    void setSearch(const QString &text);
    QString statusMessage() const { return m_status.text(); }
    AndroidState androidState() const { return m_android.state(); }
    /// The title of the player window.
    QString activeAndroidName() const { return QStringLiteral("Android App"); }
    std::optional<QUuid> launchingAppID() const { return m_launch.launchingAppID(); }
    /// Why an app's last launch failed; absent if it didn't.
    std::optional<QString> launchFailure(QUuid id) const { return m_launch.failure(id); }
    const QSet<QUuid> &runningAppIDs() const { return m_runningAppIDs; }
    const QSet<QUuid> &unreadAppIDs() const { return m_unreadAppIDs; }
    const std::optional<AndroidMedia> &nowPlaying() const { return m_nowPlaying; }
    std::optional<QUuid> nowPlayingAppID() const { return m_nowPlayingAppID; }

    std::optional<MobileApp> find(QUuid id) const override { return m_library.find(id); }
    std::vector<MobileApp> orderedApps() const override;
    /// All of them, sorted by display name alone.
    std::vector<MobileApp> appsByName() const;
    /// Whether the app's name contains the search text; an empty one is contained in every name.
    bool matchesSearch(const MobileApp &app) const;
    /// In stored order, the apps that match the search.
    std::vector<MobileApp> filteredApps() const;
    std::optional<MobileApp> firstMatch(const QString &query) const override;
    /// The same, looking at the path as well.
    std::optional<MobileApp> firstMatchInNameOrPath(const QString &text) const;

    bool add(const MobileApp &app) override { return m_library.append(app); }
    void addFiles(const QList<QUrl> &urls) override { m_import.add(urls); }
    void replaceSource(QUuid id, const QUrl &url, const QString &package) override;
    void rename(QUuid id, const QString &name) override;
    void remove(const MobileApp &app) override;
    /// Asks, and then removes the app from the device and the entry from the library.
    void confirmUninstall(const MobileApp &app) { m_uninstall.confirm(app); }
    void toggleFavorite(const MobileApp &app);

    void launch(const MobileApp &app) override { m_launch.launch(app); }
    /// Closes the app's window, if it has one.
    void close(const MobileApp &app);
    /// Starts Android before the user asks for it.
    void prewarmAndroid() { m_launch.prewarm(); }
    /// Asks the device and sets `androidState`; never overrides a start in progress.
    void refreshAndroidState() { m_android.refresh(); }
    void say(const QString &message) override { m_status.say(message); }

    /// As told at AndroidVersionSwitch.
    void switchAndroidVersion(int api) { m_versions.switchTo(api); }
    void deleteAndroidVersion(int api) { m_versions.remove(api); }

    /// What the diagnostic pictures show; an empty function leaves its picture out.
    std::function<QImage()> paintPanel;
    std::function<QImage()> paintGlyph;
    /// Writes the panel and the glyph as PNG files into the folder "snapshots" beside the log.
    void writeMenuSnapshot() const;

Q_SIGNALS:
    // Each tells of one thing, so that a new status line doesn't make anybody look at the library.
    void searchChanged();
    void statusMessageChanged();
    void androidStateChanged();
    void launchingAppChanged();
    void runningAppsChanged();
    void unreadAppsChanged();
    void nowPlayingChanged();
    /// The versions that are there, or the selected one, changed.
    void androidVersionsChanged();

private:
    void follow(const ChangeNotifications &notifications);

    const Services m_services;
    StatusLine m_status;
    StoredLibrary m_library;
    AndroidStatus m_android;
    AppImport m_import;
    AppUninstall m_uninstall;
    AndroidLaunch m_launch;
    AndroidVersionSwitch m_versions;
    QString m_search;
    QSet<QUuid> m_runningAppIDs;
    QSet<QUuid> m_unreadAppIDs;
    std::optional<AndroidMedia> m_nowPlaying;
    std::optional<QUuid> m_nowPlayingAppID;
};

} // namespace quillnest
