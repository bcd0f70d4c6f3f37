#include "core/AppUninstall.h"

#include "base/FireAndForget.h"
#include "base/QuillnestFolders.h"
#include "platform/DescribedError.h"
#include "runtime/AndroidRuntimeCLI.h"
#include "runtime/AndroidRuntimeError.h"
#include "runtime/InstallRecords.h"
#include "runtime/PackageName.h"
#include "windows/AndroidWindowRegistry.h"

#include <QDir>
#include <QPointer>

namespace quillnest
{

AppUninstall::AppUninstall(const StoreServices &services, StoredLibrary &library, StatusLine &status)
    : m_services(services), m_library(library), m_status(status)
{
}

void AppUninstall::confirm(const MobileApp &app)
{
    const Alert alert{
        .message = QStringLiteral("Uninstall %1?").arg(app.displayName()),
        .informativeText = QStringLiteral("The app and its data are removed from Quillnest's Android."),
        .buttons = {QStringLiteral("Uninstall"), QStringLiteral("Cancel")},
        .style = Alert::Style::warning};
    m_services.platform.alerts->ask(alert, [self = QPointer<AppUninstall>(this), app](int button) {
        if (self && button == 0)
            self->start(app);
    });
}

void AppUninstall::start(const MobileApp &app)
{
    const auto package = app.bundleIdentifier ? *app.bundleIdentifier
                                              : m_services.runtime.knownPackage(app.sourcePath).value_or(QString());
    // A name that can't be a package's was never installed either.
    if (!isValidPackageName(package)) {
        if (m_library.erase(app.id))
            m_status.say(QStringLiteral("Removed %1").arg(app.name));
        return;
    }
    if (auto *session = m_services.windows.session(app.id))
        session->close(QStringLiteral("uninstall"));
    m_status.say(QStringLiteral("Uninstalling %1…").arg(app.displayName()));
    fireAndForget(m_services.log, run(app, package));
}

Task<> AppUninstall::run(MobileApp app, QString package)
{
    const QPointer<AppUninstall> self(this);
    std::optional<QString> failure;
    try {
        auto booting = m_services.runtime.ensureRuntime();
        co_await booting;
    } catch (const AndroidRuntimeCancelled &) {
        co_return;
    } catch (const std::exception &error) {
        failure = descriptionOf(error);
    }
    if (!self)
        co_return;
    if (failure) {
        m_status.say(QStringLiteral("Uninstall failed: %1").arg(*failure));
        co_return;
    }
    auto uninstall = [commands = m_services.runtime.commands(), package] {
        return commands->runADB({QStringLiteral("uninstall"), package});
    };
    auto running = background(*m_services.platform.executor, std::move(uninstall));
    const auto output = co_await running;
    if (!self)
        co_return;
    m_services.log->write(QStringLiteral("Uninstall %1: %2").arg(package, output.trimmed()));
    // First the entry: one that couldn't be taken out must not be left without its file.
    if (!m_library.erase(app.id))
        co_return;
    m_services.platform.settings->remove(InstallRecords::key(app.sourcePath));
    const auto &folders = m_services.platform.folders;
    QFile::remove(QStringLiteral("%1/%2.png").arg(QuillnestFolders::icons(folders), uuidText(app.id)));
    // A file anywhere else belongs to the user and stays.
    if (QDir::cleanPath(app.sourcePath).startsWith(QuillnestFolders::packages(folders) + QLatin1Char('/')))
        QFile::remove(app.sourcePath);
    m_status.say(QStringLiteral("Uninstalled %1").arg(app.displayName()));
}

} // namespace quillnest
