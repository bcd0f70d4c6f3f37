#include "core/AppImport.h"

#include "base/FireAndForget.h"
#include "base/PlainText.h"
#include "package/APKIconExtractor.h"
#include "package/APKManifestReader.h"
#include "platform/Archives.h"
#include "platform/DescribedError.h"
#include "runtime/AndroidRuntimeCLI.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>

namespace quillnest
{

namespace
{
/// Whether a path has lost bytes on its way here because they are no UTF-8. The library's form can't hold them, so such
/// an entry could never be opened.
bool isGarbled(const QFileInfo &file)
{
    return file.filePath().contains(QChar::ReplacementCharacter) && !file.exists();
}

/// What is to be learnt of package files in the background.
struct Reading {
    std::optional<std::string> label;
    std::map<QString, QString> packages;
};

Reading read(Archives &archives, const QString &path, QStringList unknown)
{
    Reading result;
    result.label = APKIconExtractor::label(archives, path.toStdString());
    for (const auto &file : unknown << path) {
        const auto package = APKManifestReader::packageName(archives, file.toStdString());
        result.packages[file] = QString::fromStdString(package.value_or(std::string()));
    }
    return result;
}
} // namespace

AppImport::AppImport(const StoreServices &services, StoredLibrary &library, StatusLine &status)
    : m_services(services), m_library(library), m_status(status)
{
}

void AppImport::add(const QList<QUrl> &urls)
{
    for (const auto &url : urls) {
        // What is dragged from a browser may be no file, and nothing is fetched.
        if (url.isLocalFile())
            m_waiting.append(url);
    }
    if (!m_working)
        fireAndForget(m_services.log, work());
}

Task<> AppImport::work()
{
    const QPointer<AppImport> self(this);
    m_working = true;
    while (self && !m_waiting.isEmpty()) {
        const QFileInfo file(QDir::cleanPath(QFileInfo(m_waiting.takeFirst().toLocalFile()).absoluteFilePath()));
        // A name that begins with its only dot has no extension.
        const auto extension = file.completeBaseName().isEmpty() ? QString() : file.suffix().toLower();
        if (extension != QStringLiteral("apk") && extension != QStringLiteral("ipa")) {
            m_status.say(QStringLiteral("Skipped %1: choose an APK or IPA").arg(file.fileName()));
            continue;
        }
        if (isGarbled(file)) {
            m_status.say(QStringLiteral("Skipped %1: its name is not valid text").arg(file.fileName()));
            continue;
        }
        if (!file.isFile()) {
            m_status.say(QStringLiteral("Skipped %1: there is no such file").arg(file.fileName()));
            continue;
        }
        const auto platform = extension == QStringLiteral("apk") ? MobilePlatform::android : MobilePlatform::ios;
        std::optional<QString> failure;
        try {
            auto adding = addPackage(file.filePath(), platform);
            co_await adding;
        } catch (const std::exception &error) {
            failure = descriptionOf(error);
        }
        // The files behind it come all the same.
        if (self && failure)
            m_status.say(QStringLiteral("Skipped %1: %2").arg(file.fileName(), *failure));
    }
    if (self)
        m_working = false;
}

Task<> AppImport::addPackage(QString path, MobilePlatform platform)
{
    const QPointer<AppImport> self(this);
    const QFileInfo file(path);
    if (const auto known = m_library.withSource(path)) {
        m_status.say(QStringLiteral("Already in library: %1").arg(known->displayName()));
        co_return;
    }
    MobileApp app;
    if (platform == MobilePlatform::android) {
        auto work = [archives = m_services.platform.archives, path, unknown = filesOfUnknownPackages()] {
            return read(*archives, path, unknown);
        };
        auto reading = background(*m_services.platform.executor, std::move(work));
        auto found = co_await reading;
        if (!self)
            co_return;
        for (const auto &[read, package] : found.packages)
            m_packages.insert_or_assign(read, package);
        if (const auto known = withPackageOf(path)) {
            // Android has one app of a name: two entries would be the same app twice.
            // What is installed stays the entry's, though nothing has been installed from this file yet.
            const auto installed = m_services.runtime.knownPackage(known->sourcePath);
            const bool changed = m_library.change(known->id, [&path, &installed](MobileApp &entry) {
                entry.sourcePath = path;
                if (installed)
                    entry.bundleIdentifier = installed;
            });
            if (changed)
                m_status.say(QStringLiteral("Already in library: %1, which now comes from %2")
                                 .arg(known->displayName(), file.fileName()));
            co_return;
        }
        if (found.label)
            app.name = plainName(QString::fromStdString(*found.label));
    }
    if (app.name.isEmpty())
        app.name = plainName(file.completeBaseName());
    app.id = QUuid::createUuid();
    app.platform = platform;
    app.sourcePath = path;
    app.addedAt = m_services.platform.clock->wallTime();
    if (m_library.append(app))
        m_status.say(QStringLiteral("Added %1").arg(file.fileName()));
}

QStringList AppImport::filesOfUnknownPackages() const
{
    QStringList files;
    for (const auto &app : m_library.apps()) {
        if (app.platform == MobilePlatform::android && !app.bundleIdentifier && !m_packages.contains(app.sourcePath))
            files.append(app.sourcePath);
    }
    return files;
}

std::optional<MobileApp> AppImport::withPackageOf(const QString &path) const
{
    const auto packageOf = [this](const QString &file) {
        const auto known = m_packages.find(file);
        return known == m_packages.end() ? QString() : known->second;
    };
    const auto package = packageOf(path);
    for (const auto &app : m_library.apps()) {
        const bool isAndroid = app.platform == MobilePlatform::android;
        if (isAndroid && !package.isEmpty() && app.bundleIdentifier.value_or(packageOf(app.sourcePath)) == package)
            return app;
    }
    return std::nullopt;
}

} // namespace quillnest
