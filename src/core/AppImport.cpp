#include "core/AppImport.h"

#include "base/FireAndForget.h"
#include "base/PlainText.h"
#include "package/APKIconExtractor.h"
#include "platform/DescribedError.h"

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
    if (m_library.hasSource(path)) {
        m_status.say(QStringLiteral("Already in library: %1").arg(file.completeBaseName()));
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
        if (label)
            app.name = plainName(QString::fromStdString(*label));
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

} // namespace quillnest
