#include "core/AppLibraryStore.h"

#include "base/PlainText.h"
#include "windows/AndroidWindowRegistry.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace quillnest
{

AppLibraryStore::AppLibraryStore(Services services)
    : m_services(std::move(services))
    , m_library(m_services.platform.settings, m_services.log, m_status)
    , m_android(m_services)
    , m_import(m_services, m_library, m_status)
    , m_uninstall(m_services, m_library, m_status)
    , m_launch(m_services, m_android, m_status)
    , m_versions(m_services, m_android, m_status)
{
    connect(&m_status, &StatusLine::changed, this, &AppLibraryStore::statusMessageChanged);
    connect(&m_library, &StoredLibrary::changed, this, &AppLibraryStore::appsChanged);
    connect(&m_android, &AndroidStatus::changed, this, &AppLibraryStore::androidStateChanged);
    connect(&m_launch, &AndroidLaunch::launchingChanged, this, &AppLibraryStore::launchingAppChanged);
    connect(&m_versions, &AndroidVersionSwitch::switched, this, &AppLibraryStore::androidVersionsChanged);
    connect(&m_versions, &AndroidVersionSwitch::removed, this, &AppLibraryStore::androidVersionsChanged);
    follow(*m_services.notifications);
    m_android.refresh();
}

AppLibraryStore::~AppLibraryStore() = default;

void AppLibraryStore::follow(const ChangeNotifications &notifications)
{
    connect(&notifications, &ChangeNotifications::mediaChanged, this, [this] {
        const auto &playing = m_services.windows.nowPlaying();
        m_nowPlaying = playing ? std::optional(playing->media) : std::nullopt;
        m_nowPlayingAppID = playing ? std::optional(playing->appID) : std::nullopt;
        Q_EMIT nowPlayingChanged();
    });
    connect(&notifications, &ChangeNotifications::unreadChanged, this, [this] {
        m_unreadAppIDs = m_services.windows.unreadAppIDs();
        Q_EMIT unreadAppsChanged();
    });
    connect(&notifications, &ChangeNotifications::sessionsChanged, this, [this] {
        m_runningAppIDs.clear();
        for (const auto &[appID, session] : m_services.windows.sessions())
            m_runningAppIDs.insert(appID);
        Q_EMIT runningAppsChanged();
    });
    connect(&notifications, &ChangeNotifications::openAppRequest, this, [this](const QString &id) {
        if (const auto app = find(QUuid::fromString(id)))
            launch(*app);
    });
}

void AppLibraryStore::setSearch(const QString &text)
{
    if (m_search == text)
        return;
    m_search = text;
    Q_EMIT searchChanged();
}

std::vector<MobileApp> AppLibraryStore::orderedApps() const
{
    return m_library.sorted(StoredLibrary::Order::favouritesFirst);
}

std::vector<MobileApp> AppLibraryStore::appsByName() const
{
    return m_library.sorted(StoredLibrary::Order::byName);
}

bool AppLibraryStore::matchesSearch(const MobileApp &app) const
{
    return m_search.isEmpty() || containsText(app.name, m_search);
}

std::vector<MobileApp> AppLibraryStore::filteredApps() const
{
    std::vector<MobileApp> result;
    std::copy_if(apps().begin(), apps().end(), std::back_inserter(result), [this](const MobileApp &app) {
        return matchesSearch(app);
    });
    return result;
}

std::optional<MobileApp> AppLibraryStore::firstMatch(const QString &query) const
{
    const auto found = std::find_if(
        apps().begin(), apps().end(), [&query](const MobileApp &app) { return containsText(app.name, query); });
    return found == apps().end() ? std::nullopt : std::optional(*found);
}

std::optional<MobileApp> AppLibraryStore::firstMatchInNameOrPath(const QString &text) const
{
    const auto found = std::find_if(apps().begin(), apps().end(), [&text](const MobileApp &app) {
        return containsText(app.name, text) || containsText(app.sourcePath, text);
    });
    return found == apps().end() ? std::nullopt : std::optional(*found);
}

void AppLibraryStore::replaceSource(QUuid id, const QUrl &url, const QString &package)
{
    m_library.change(id, [&](MobileApp &app) {
        app.sourcePath = QDir::cleanPath(QFileInfo(url.toLocalFile()).absoluteFilePath());
        app.bundleIdentifier = package;
    });
}

void AppLibraryStore::rename(QUuid id, const QString &name)
{
    m_library.change(id, [&name](MobileApp &app) { app.name = plainName(name); });
}

void AppLibraryStore::toggleFavorite(const MobileApp &app)
{
    m_library.change(app.id, [](MobileApp &entry) { entry.isFavorite = !entry.isFavorite; });
}

void AppLibraryStore::remove(const MobileApp &app)
{
    // The entry that was given may be one of those that go.
    const auto name = app.name;
    if (m_library.erase(app.id))
        m_status.say(QStringLiteral("Removed %1").arg(name));
}

void AppLibraryStore::close(const MobileApp &app)
{
    if (auto *session = m_services.windows.session(app.id))
        session->close(QStringLiteral("menu"));
}

void AppLibraryStore::writeMenuSnapshot() const
{
    const auto folder = m_services.platform.folders.logs + QStringLiteral("/snapshots");
    const auto write = [&folder](const std::function<QImage()> &paint, const QString &name) {
        const auto image = paint ? paint() : QImage();
        return !image.isNull() && QDir().mkpath(folder) && image.save(folder + QLatin1Char('/') + name, "PNG");
    };
    if (write(paintPanel, QStringLiteral("menu-panel.png")))
        write(paintGlyph, QStringLiteral("glyph.png"));
}

} // namespace quillnest
