// library-churn SETTINGS FOLDER SEED: adds, favours, moves and removes apps for ever, with the program's own library
// and settings on disk, and says what it does:
//
//   loaded LIBRARY     what stood in the settings at the start
//   doing LIBRARY      what the library will be when the operation that begins now has finished
//   done LIBRARY       what it is
//
// A library is the list of its entries on one line. An entry that is about to be made has no id yet.

#include "core/AppLibraryStore.h"
#include "platform/HostServices.h"
#include "platform/desktop/QtClock.h"
#include "platform/desktop/QtExecutor.h"
#include "platform/posix/FileSettingsStore.h"
#include "platform/posix/ZipArchives.h"
#include "runtime/AndroidRuntimeCLI.h"
#include "runtime/AndroidRuntimeProvisioner.h"
#include "windows/AndroidWindowRegistry.h"

#include <QApplication>
#include <QFileInfo>

#include <cstdio>
#include <random>

using namespace quillnest;

namespace
{

/// How many package files there are to choose from.
constexpr int fileCount = 24;

QString describe(const std::vector<MobileApp> &apps)
{
    QStringList entries;
    for (const auto &app : apps) {
        entries += QStringList{
            app.id.isNull() ? QStringLiteral("new") : uuidText(app.id), app.name, app.sourcePath,
            app.bundleIdentifier.value_or(QStringLiteral("none")),
            app.isFavorite ? QStringLiteral("favourite") : QStringLiteral("plain")}
                       .join(QLatin1Char('|'));
    }
    return entries.join(QLatin1Char(';'));
}

void say(const char *word, const std::vector<MobileApp> &apps)
{
    std::printf("%s %s\n", word, describe(apps).toUtf8().constData());
    std::fflush(stdout);
}

class Churn
{
public:
    Churn(AppLibraryStore &store, SettingsStore &settings, QString folder, unsigned seed)
        : m_store(store), m_settings(settings), m_folder(std::move(folder)), m_random(seed)
    {
    }

    void step()
    {
        const auto &apps = m_store.apps();
        const auto kind = pick(4);
        if (apps.empty() || (kind == 0 && apps.size() < fileCount))
            add();
        else
            change(kind);
        // As by a window that is being dragged.
        m_settings.setValue(QStringLiteral("width"), static_cast<int>(pick(1000)));
    }

private:
    std::size_t pick(std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random); }

    void add()
    {
        MobileApp app;
        do {
            app.name = QStringLiteral("app%1").arg(pick(fileCount));
            app.sourcePath = QStringLiteral("%1/%2.apk").arg(m_folder, app.name);
        } while (isKnown(app.sourcePath));
        auto expected = m_store.apps();
        expected.push_back(app);
        QFile(app.sourcePath).open(QIODevice::WriteOnly);
        say("doing", expected);
        m_store.addFiles({QUrl::fromLocalFile(app.sourcePath)});
        while (m_store.apps().size() < expected.size())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        say("done", m_store.apps());
    }

    void change(std::size_t kind)
    {
        auto expected = m_store.apps();
        const auto index = pick(expected.size());
        const MobileApp app = expected[index];
        const auto package = QStringLiteral("org.example.v%1").arg(++m_moves);
        if (kind <= 1)
            expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(index));
        else if (kind == 2)
            expected[index].isFavorite = !app.isFavorite;
        else
            expected[index].bundleIdentifier = package;
        say("doing", expected);
        if (kind <= 1)
            m_store.remove(app);
        else if (kind == 2)
            m_store.toggleFavorite(app);
        else
            m_store.replaceSource(app.id, QUrl::fromLocalFile(app.sourcePath), package);
        QCoreApplication::processEvents();
        say("done", m_store.apps());
    }

    bool isKnown(const QString &path) const
    {
        const auto &apps = m_store.apps();
        return std::any_of(apps.begin(), apps.end(), [&path](const MobileApp &app) { return app.sourcePath == path; });
    }

    AppLibraryStore &m_store;
    SettingsStore &m_settings;
    const QString m_folder;
    std::mt19937 m_random;
    int m_moves = 0;
};

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const auto arguments = QApplication::arguments();
    if (arguments.size() != 4)
        return 2;
    const auto &folder = arguments[2];

    Platform platform;
    platform.folders
        = {.home = folder, .applicationSupport = folder, .logs = folder, .temporary = folder, .bundle = folder};
    platform.clock = std::make_shared<QtClock>();
    platform.executor = std::make_shared<QtExecutor>();
    platform.settings = std::make_shared<FileSettingsStore>(arguments[1]);
    platform.archives = std::make_shared<ZipArchives>();
    platform.processes = hostChildProcesses();
    const auto log
        = std::make_shared<QuillnestLog>(platform.clock, platform.folders.logs, QStringLiteral("churn.log"), false);
    const auto notifications = std::make_shared<ChangeNotifications>();
    AndroidRuntimeCLI runtime(platform, log);
    AndroidRuntimeProvisioner provisioner(platform);
    AndroidWindowRegistry windows(WindowServices{platform, log, notifications, runtime.commands()});
    const auto deviceCleaned = endedCompletion();
    AppLibraryStore store(AppLibraryStore::Services{
        .platform = platform,
        .log = log,
        .notifications = notifications,
        .runtime = runtime,
        .windows = windows,
        .provisioner = provisioner,
        .deviceCleaned = deviceCleaned});

    say("loaded", store.apps());
    for (Churn churn(store, *platform.settings, folder, arguments[3].toUInt());;)
        churn.step();
}
