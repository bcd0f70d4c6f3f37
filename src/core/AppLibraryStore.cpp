#include "core/AppLibraryStore.h"

#include "base/FireAndForget.h"
#include "base/QuillnestFolders.h"
#include "core/CoreSettings.h"
#include "core/LibraryFormat.h"
#include "package/APKIconExtractor.h"
#include "runtime/AndroidRuntimeError.h"
#include "runtime/InstallRecords.h"
#include "runtime/PackageName.h"

#include <QCollator>
#include <QDir>
#include <QFileInfo>
#include <QPointer>

#include <algorithm>

namespace quillnest
{

namespace
{

bool contains(const QString &text, const QString &part)
{
    return !part.isEmpty() && text.contains(part, Qt::CaseInsensitive);
}

QString absolutePath(const QUrl &url)
{
    return QDir::cleanPath(QFileInfo(url.toLocalFile()).absoluteFilePath());
}

/// Whether a path has lost bytes on its way here because they are no UTF-8. The library's form can't hold them, so such
/// an entry could never be opened.
bool isGarbled(const QFileInfo &file)
{
    return file.filePath().contains(QChar::ReplacementCharacter) && !file.exists();
}
} // namespace

AppLibraryStore::AppLibraryStore(Services services) : m_services(std::move(services))
{
    load();
    const auto *notifications = m_services.notifications.get();
    connect(notifications, &ChangeNotifications::mediaChanged, this, [this] {
        const auto &playing = m_services.windows.nowPlaying();
        m_nowPlaying = playing ? std::optional(playing->media) : std::nullopt;
        m_nowPlayingAppID = playing ? std::optional(playing->appID) : std::nullopt;
        Q_EMIT changed();
    });
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
    const auto value = m_services.platform.settings->value(CoreSettings::apps.key());
    if (value.typeId() != QMetaType::QByteArray)
        return;
    if (auto apps = LibraryFormat::decode(value.toByteArray()))
        save(std::move(*apps));
}

bool AppLibraryStore::save(std::vector<MobileApp> apps)
{
    if (const auto failure
        = m_services.platform.settings->setValue(CoreSettings::apps.key(), LibraryFormat::encode(apps))) {
        m_services.log->write(QStringLiteral("library not saved error=%1").arg(*failure));
        setStatus(QStringLiteral("Could not save the library: %1").arg(*failure));
        return false;
    }
    m_apps = std::move(apps);
    Q_EMIT changed();
    return true;
}

void AppLibraryStore::change(QUuid id, const std::function<void(MobileApp &)> &edit)
{
    auto apps = m_apps;
    const auto found = std::find_if(apps.begin(), apps.end(), [id](const MobileApp &app) { return app.id == id; });
    if (found == apps.end())
        return;
    edit(*found);
    save(std::move(apps));
}

bool AppLibraryStore::erase(QUuid id)
{
    auto apps = m_apps;
    std::erase_if(apps, [id](const MobileApp &entry) { return entry.id == id; });
    return save(std::move(apps));
}

const MobileApp *AppLibraryStore::find(QUuid id) const
{
    const auto found = std::find_if(m_apps.begin(), m_apps.end(), [id](const MobileApp &app) { return app.id == id; });
    return found == m_apps.end() ? nullptr : &*found;
}

bool AppLibraryStore::hasSource(const QString &path) const
{
    return std::any_of(m_apps.begin(), m_apps.end(), [&path](const MobileApp &app) { return app.sourcePath == path; });
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
    return sortedApps(true);
}

std::vector<MobileApp> AppLibraryStore::appsByName() const
{
    return sortedApps(false);
}

std::vector<MobileApp> AppLibraryStore::sortedApps(bool favouritesFirst) const
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
    std::stable_sort(keyed.begin(), keyed.end(), [favouritesFirst](const Keyed &a, const Keyed &b) {
        if (favouritesFirst && a.app->isFavorite != b.app->isFavorite)
            return a.app->isFavorite;
        return a.key < b.key;
    });
    std::vector<MobileApp> result;
    result.reserve(keyed.size());
    for (const auto &entry : keyed)
        result.push_back(*entry.app);
    return result;
}

bool AppLibraryStore::matchesSearch(const MobileApp &app) const
{
    return m_search.isEmpty() || contains(app.name, m_search);
}

std::vector<MobileApp> AppLibraryStore::filteredApps() const
{
    if (m_search.isEmpty())
        return m_apps;
    std::vector<MobileApp> result;
    std::copy_if(m_apps.begin(), m_apps.end(), std::back_inserter(result), [this](const MobileApp &app) {
        return matchesSearch(app);
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
        // What has been dragged from a browser may be no file.
        const QFileInfo file(url.isLocalFile() ? absolutePath(url) : url.fileName());
        // A name that begins with its only dot has no extension.
        const auto extension = file.completeBaseName().isEmpty() ? QString() : file.suffix().toLower();
        if (extension != QStringLiteral("apk") && extension != QStringLiteral("ipa")) {
            setStatus(QStringLiteral("Skipped %1: choose an APK or IPA").arg(file.fileName()));
            continue;
        }
        if (isGarbled(file)) {
            setStatus(QStringLiteral("Skipped %1: its name is not valid text").arg(file.fileName()));
            continue;
        }
        const auto platform = extension == QStringLiteral("apk") ? MobilePlatform::android : MobilePlatform::ios;
        auto adding = addPackage(file.filePath(), platform);
        co_await adding;
    }
}

Task<> AppLibraryStore::addPackage(QString path, MobilePlatform platform)
{
    const QPointer<AppLibraryStore> self(this);
    const QFileInfo file(path);
    const auto alreadyKnown = QStringLiteral("Already in library: %1").arg(file.completeBaseName());
    if (hasSource(path)) {
        setStatus(alreadyKnown);
        co_return;
    }
    MobileApp app;
    if (platform == MobilePlatform::android) {
        auto readLabel = [archives = m_services.platform.archives, native = path.toStdString()] {
            return APKIconExtractor::label(*archives, native);
        };
        auto reading = background(*m_services.platform.executor, std::move(readLabel));
        const auto label = co_await reading;
        if (!self)
            co_return;
        // The same file may have been added meanwhile.
        if (hasSource(path)) {
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
    auto apps = m_apps;
    apps.push_back(app);
    if (save(std::move(apps)))
        setStatus(QStringLiteral("Added %1").arg(file.fileName()));
}

void AppLibraryStore::replaceSource(QUuid id, const QUrl &url, const QString &package)
{
    change(id, [&](MobileApp &app) {
        app.sourcePath = absolutePath(url);
        app.bundleIdentifier = package;
    });
}

void AppLibraryStore::toggleFavorite(const MobileApp &app)
{
    change(app.id, [](MobileApp &entry) { entry.isFavorite = !entry.isFavorite; });
}

void AppLibraryStore::remove(const MobileApp &app)
{
    // The entry that was given may be one of those that go.
    const auto name = app.name;
    if (erase(app.id))
        setStatus(QStringLiteral("Removed %1").arg(name));
}

void AppLibraryStore::confirmUninstall(const MobileApp &app)
{
    const Alert alert{
        .message = QStringLiteral("Uninstall %1?").arg(app.displayName()),
        .informativeText = QStringLiteral("The app and its data are removed from Quillnest's Android."),
        .buttons = {QStringLiteral("Uninstall"), QStringLiteral("Cancel")},
        .style = Alert::Style::Warning};
    m_services.platform.alerts->ask(alert, [self = QPointer<AppLibraryStore>(this), app](int button) {
        if (!self || button != 0)
            return;
        const auto package = app.bundleIdentifier
            ? *app.bundleIdentifier
            : self->m_services.runtime.knownPackage(app.sourcePath).value_or(QString());
        // A name that can't be a package's was never installed either.
        if (!isValidPackageName(package)) {
            self->remove(app);
            return;
        }
        if (auto *session = self->m_services.windows.session(app.id))
            session->close(QStringLiteral("uninstall"));
        self->setStatus(QStringLiteral("Uninstalling %1…").arg(app.displayName()));
        fireAndForget(self->m_services.log, self->uninstall(app, package));
    });
}

Task<> AppLibraryStore::uninstall(MobileApp app, QString package)
{
    const QPointer<AppLibraryStore> self(this);
    std::optional<QString> failure;
    try {
        auto booting = m_services.runtime.ensureRuntime();
        co_await booting;
    } catch (const AndroidRuntimeCancelled &) {
        co_return;
    } catch (const std::exception &error) {
        failure = QString::fromUtf8(error.what());
    }
    if (!self)
        co_return;
    if (failure) {
        setStatus(QStringLiteral("Uninstall failed: %1").arg(*failure));
        co_return;
    }
    auto run = [commands = m_services.runtime.commands(), package] {
        return commands->runADB({QStringLiteral("uninstall"), package});
    };
    auto running = background(*m_services.platform.executor, std::move(run));
    const auto output = co_await running;
    if (!self)
        co_return;
    m_services.log->write(QStringLiteral("Uninstall %1: %2").arg(package, output.trimmed()));
    m_services.platform.settings->remove(InstallRecords::key(app.sourcePath));
    const auto &folders = m_services.platform.folders;
    QFile::remove(QStringLiteral("%1/%2.png").arg(QuillnestFolders::icons(folders), uuidText(app.id)));
    // A file anywhere else belongs to the user and stays.
    if (QDir::cleanPath(app.sourcePath).startsWith(QuillnestFolders::packages(folders) + QLatin1Char('/')))
        QFile::remove(app.sourcePath);
    if (erase(app.id))
        setStatus(QStringLiteral("Uninstalled %1").arg(app.displayName()));
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
