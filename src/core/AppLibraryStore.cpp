#include "core/AppLibraryStore.h"

#include "base/FireAndForget.h"
#include "core/LibraryFormat.h"
#include "package/APKIconExtractor.h"

#include <QCollator>
#include <QFileInfo>
#include <QPointer>

#include <algorithm>

namespace quillnest
{

namespace
{
const auto defaultsKey = QStringLiteral("Quillnest.apps.v1");

bool contains(const QString &text, const QString &part)
{
    return !part.isEmpty() && text.contains(part, Qt::CaseInsensitive);
}
} // namespace

AppLibraryStore::AppLibraryStore(Services services) : m_services(std::move(services))
{
    load();
    const auto *notifications = m_services.notifications.get();
    connect(
        notifications, &ChangeNotifications::runtimeChanged, this, [this] { setAndroidState(AndroidState::sleeping); });
    refreshAndroidState();
    connect(notifications, &ChangeNotifications::unreadChanged, this, [this] {
        m_unreadAppIDs = m_services.windows.unreadAppIDs();
        Q_EMIT changed();
    });
    connect(notifications, &ChangeNotifications::sessionsChanged, this, [this] {
        m_runningAppIDs.clear();
        for (const auto &[appID, session] : m_services.windows.sessions())
            m_runningAppIDs.insert(appID);
        Q_EMIT changed();
    });
    connect(notifications, &ChangeNotifications::openAppRequest, this, [this](const QString &id) {
        if (const auto *app = find(QUuid::fromString(id)))
            launch(MobileApp(*app));
    });
}

AppLibraryStore::~AppLibraryStore() = default;

void AppLibraryStore::load()
{
    const auto value = m_services.platform.settings->value(defaultsKey);
    if (value.typeId() != QMetaType::QByteArray)
        return;
    if (auto apps = LibraryFormat::decode(value.toByteArray())) {
        m_apps = std::move(*apps);
        save();
    }
}

void AppLibraryStore::save()
{
    m_services.platform.settings->setValue(defaultsKey, LibraryFormat::encode(m_apps));
    Q_EMIT changed();
}

MobileApp *AppLibraryStore::find(QUuid id)
{
    const auto found = std::find_if(m_apps.begin(), m_apps.end(), [id](const MobileApp &app) { return app.id == id; });
    return found == m_apps.end() ? nullptr : &*found;
}

void AppLibraryStore::setStatus(const QString &message)
{
    m_statusMessage = message;
    Q_EMIT changed();
}

void AppLibraryStore::setAndroidState(AndroidState state)
{
    m_androidState = state;
    Q_EMIT changed();
}

void AppLibraryStore::setSearch(const QString &text)
{
    m_search = text;
    Q_EMIT changed();
}

std::vector<MobileApp> AppLibraryStore::orderedApps() const
{
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    // A locale without rules of its own doesn't know what a collator's case sensitivity means, so case goes first.
    // The sort key holds what the display name and the locale make of an app, so each is worked out once.
    struct Keyed {
        QCollatorSortKey key;
        const MobileApp *app;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(m_apps.size());
    for (const auto &app : m_apps)
        keyed.push_back({collator.sortKey(app.displayName().toCaseFolded()), &app});
    std::stable_sort(keyed.begin(), keyed.end(), [](const Keyed &a, const Keyed &b) {
        if (a.app->isFavorite != b.app->isFavorite)
            return a.app->isFavorite;
        return a.key < b.key;
    });
    std::vector<MobileApp> result;
    result.reserve(keyed.size());
    for (const auto &entry : keyed)
        result.push_back(*entry.app);
    return result;
}

std::vector<MobileApp> AppLibraryStore::filteredApps() const
{
    if (m_search.isEmpty())
        return m_apps;
    std::vector<MobileApp> result;
    std::copy_if(m_apps.begin(), m_apps.end(), std::back_inserter(result), [this](const MobileApp &app) {
        return contains(app.name, m_search);
    });
    return result;
}

std::optional<MobileApp> AppLibraryStore::firstMatch(const QString &query) const
{
    for (const auto &app : m_apps) {
        if (contains(app.name, query))
            return app;
    }
    return std::nullopt;
}

std::optional<MobileApp> AppLibraryStore::firstMatchInNameOrPath(const QString &text) const
{
    for (const auto &app : m_apps) {
        if (contains(app.name, text) || contains(app.sourcePath, text))
            return app;
    }
    return std::nullopt;
}

void AppLibraryStore::addFiles(const QList<QUrl> &urls)
{
    fireAndForget(m_services.log, addAll(urls));
}

Task<> AppLibraryStore::addAll(QList<QUrl> urls)
{
    const QPointer<AppLibraryStore> self(this);
    for (const auto &url : urls) {
        if (!self)
            co_return;
        const auto path = url.toLocalFile();
        const QFileInfo file(path);
        // A name that begins with its only dot has no extension.
        const auto extension = file.completeBaseName().isEmpty() ? QString() : file.suffix().toLower();
        if (extension != QStringLiteral("apk") && extension != QStringLiteral("ipa")) {
            setStatus(QStringLiteral("Skipped %1: choose an APK or IPA").arg(file.fileName()));
            continue;
        }
        const auto platform = extension == QStringLiteral("apk") ? MobilePlatform::android : MobilePlatform::ios;
        auto adding = addPackage(path, platform);
        co_await adding;
    }
}

Task<> AppLibraryStore::addPackage(QString path, MobilePlatform platform)
{
    const QPointer<AppLibraryStore> self(this);
    const QFileInfo file(path);
    const auto isKnown = [this, path] {
        return std::any_of(
            m_apps.begin(), m_apps.end(), [&path](const MobileApp &app) { return app.sourcePath == path; });
    };
    const auto alreadyKnown = QStringLiteral("Already in library: %1").arg(file.completeBaseName());
    if (isKnown()) {
        setStatus(alreadyKnown);
        co_return;
    }
    MobileApp app;
    if (platform == MobilePlatform::android) {
        auto readLabel = [processes = m_services.platform.processes, native = path.toStdString()] {
            return APKIconExtractor::label(*processes, native);
        };
        auto reading = background(*m_services.platform.executor, std::move(readLabel));
        const auto label = co_await reading;
        if (!self)
            co_return;
        // The same file may have been added meanwhile.
        if (isKnown()) {
            setStatus(alreadyKnown);
            co_return;
        }
        if (label)
            app.name = QString::fromStdString(*label);
    }
    if (app.name.isEmpty())
        app.name = file.completeBaseName();
    app.id = QUuid::createUuid();
    app.platform = platform;
    app.sourcePath = path;
    app.addedAt = m_services.platform.clock->wallTime();
    m_apps.push_back(app);
    save();
    setStatus(QStringLiteral("Added %1").arg(file.fileName()));
}

void AppLibraryStore::replaceSource(QUuid id, const QUrl &url, const QString &package)
{
    if (auto *app = find(id)) {
        app->sourcePath = url.toLocalFile();
        app->bundleIdentifier = package;
        save();
    }
}

void AppLibraryStore::toggleFavorite(const MobileApp &app)
{
    if (auto *entry = find(app.id)) {
        entry->isFavorite = !entry->isFavorite;
        save();
    }
}

void AppLibraryStore::remove(const MobileApp &app)
{
    // The entry that was given may be one of those that go.
    const auto name = app.name;
    std::erase_if(m_apps, [id = app.id](const MobileApp &entry) { return entry.id == id; });
    save();
    setStatus(QStringLiteral("Removed %1").arg(name));
}

} // namespace quillnest
