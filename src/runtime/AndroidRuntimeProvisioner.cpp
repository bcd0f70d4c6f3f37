#include "runtime/AndroidRuntimeProvisioner.h"

#include "base/FireAndForget.h"
#include "platform/DescribedError.h"
#include "runtime/AVDDefinition.h"
#include "runtime/AndroidRuntimeError.h"
#include "runtime/AndroidRuntimePaths.h"
#include "runtime/AndroidVersions.h"
#include "runtime/DownloadDelegate.h"
#include "runtime/PlainFailures.h"
#include "runtime/RuntimeProvisionError.h"
#include "runtime/RuntimeRepository.h"
#include "runtime/Sha1.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QSaveFile>

#include <stdexcept>

namespace quillnest
{

namespace
{

std::runtime_error failure(const QString &path, const QString &words)
{
    return std::runtime_error((path + QStringLiteral(": ") + words).toStdString());
}

void makeFolder(const QString &path)
{
    if (!QDir().mkpath(path))
        throw failure(path, QStringLiteral("the folder can't be made"));
}

void writeAtomically(const QString &path, const QByteArray &content)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
        throw failure(path, file.errorString());
}

/// The sum of a file as far as it can be read, for a comparison.
QString sumIfReadable(const QString &path)
{
    try {
        return sha1OfFile(path);
    } catch (const std::runtime_error &) {
        return {};
    }
}

QString unpackFolder(const AndroidRuntimePaths &paths, const RuntimeArchive &archive)
{
    // An image's archive holds a folder named after its ABI; those of the tools hold one named after the tool.
    if (archive.packagePath.startsWith(QLatin1String("system-images;")))
        return QStringLiteral("%1/system-images/android-%2/default").arg(paths.sdkRoot).arg(paths.api);
    return paths.sdkRoot;
}

/// What was installed, and with whose consent to what. A record: nothing reads it to decide anything.
QByteArray manifestOf(const RuntimePlan &plan, const QStringList &acceptedLicenses, const QDateTime &now)
{
    QJsonArray packages;
    for (const auto &archive : plan.archives) {
        packages.append(QJsonObject{
            {QStringLiteral("path"), archive.packagePath},
            {QStringLiteral("revision"), archive.revision},
            {QStringLiteral("sha1"), archive.sha1},
            {QStringLiteral("url"), archive.url.toString(QUrl::FullyEncoded)}});
    }
    const QJsonObject manifest{
        {QStringLiteral("installedAt"), now.toUTC().toString(Qt::ISODate)},
        {QStringLiteral("acceptedLicenses"), QJsonArray::fromStringList(acceptedLicenses)},
        {QStringLiteral("packages"), packages}};
    return QJsonDocument(manifest).toJson(QJsonDocument::Indented);
}

/// A licence's id comes from a list on the network and becomes the name of a file.
bool isFileName(const QString &id)
{
    return !id.isEmpty() && id.size() < 200 && !id.contains(u'/') && !id.contains(QChar(u'\0')) && !id.startsWith(u'.');
}

} // namespace

AndroidRuntimeProvisioner::AndroidRuntimeProvisioner(Platform platform)
    : m_platform(std::move(platform))
    , m_log(std::make_shared<QuillnestLog>(
          m_platform.clock, m_platform.folders.logs, QStringLiteral("runtime-setup.log"), false))
{
}

AndroidRuntimeProvisioner::~AndroidRuntimeProvisioner() = default;

AndroidRuntimePaths AndroidRuntimeProvisioner::selectedPaths() const
{
    return AndroidRuntimePaths::managed(m_platform, AndroidVersions::selected(*m_platform.settings));
}

void AndroidRuntimeProvisioner::prepare()
{
    if (selectedPaths().isComplete()) {
        setPhase(Ready{});
        return;
    }
    if (!std::holds_alternative<Idle>(m_phase) && !std::holds_alternative<Failed>(m_phase))
        return;
    setPhase(Checking{});
    fireAndForget(m_log, makePlan());
}

Task<> AndroidRuntimeProvisioner::makePlan()
{
    const QPointer<AndroidRuntimeProvisioner> self(this);
    const int round = ++m_round;
    QString failureWords;
    try {
        auto plan = co_await RuntimeRepository::plan(m_platform);
        // A reset while the lists came in made this plan nobody's.
        if (!self || self->m_round != round)
            co_return;
        for (const auto &archive : plan.archives) {
            m_log->write(QStringLiteral("plan %1 %2 %3 bytes sha1=%4 %5 license=%6")
                             .arg(archive.packagePath, archive.revision)
                             .arg(archive.size)
                             .arg(archive.sha1, archive.url.toString(QUrl::FullyEncoded), archive.licenseID));
        }
        m_plan = std::move(plan);
        setPhase(NeedsAcceptance{});
        co_return;
    } catch (const std::exception &error) {
        failureWords = descriptionOf(error);
    }
    if (!self || self->m_round != round)
        co_return;
    m_log->write(QStringLiteral("plan failed: ") + failureWords);
    setPhase(Failed{PlainFailures::ofSetup(failureWords)});
}

void AndroidRuntimeProvisioner::acceptAndInstall()
{
    if (!m_plan || !std::holds_alternative<NeedsAcceptance>(m_phase) || selectedPaths().isComplete())
        return;
    // The version may have been changed behind our back: nobody has agreed to the image that is wanted now.
    if (m_plan->archives.empty() || m_plan->archives.back().packagePath != RuntimeRepository::image(m_platform)) {
        reset();
        prepare();
        return;
    }
    QStringList ids;
    for (const auto &license : m_plan->licenses)
        ids.append(license.id);
    m_log->write(QStringLiteral("user accepted licences ") + ids.join(u','));
    // At once: a second consent, or a reset, must not find the question still open.
    setPhase(Downloading{m_plan->archives.empty() ? QString() : m_plan->archives.front().label(), 0});
    fireAndForget(m_log, acceptedInstall(*m_plan, ids));
}

Task<> AndroidRuntimeProvisioner::acceptedInstall(RuntimePlan plan, QStringList acceptedLicenses)
{
    const QPointer<AndroidRuntimeProvisioner> self(this);
    QString failureWords;
    try {
        co_await install(plan, acceptedLicenses);
        if (!self)
            co_return;
        m_log->write(QStringLiteral("runtime ready at ") + AndroidRuntimePaths::managedRoot(m_platform));
        if (selectedPaths().isComplete()) {
            setPhase(Ready{});
        } else {
            // Another version was selected meanwhile; what it needs is to be asked for now.
            m_plan.reset();
            setPhase(Idle{});
            prepare();
        }
        co_return;
    } catch (const std::exception &error) {
        failureWords = descriptionOf(error);
    }
    if (!self)
        co_return;
    m_log->write(QStringLiteral("install failed: ") + failureWords);
    setPhase(Failed{PlainFailures::ofSetup(failureWords)});
}

Task<> AndroidRuntimeProvisioner::install(const RuntimePlan &plan, const QStringList &acceptedLicenses)
{
    // Both become names of files, so they are looked at before anything is written.
    for (const auto &archive : plan.archives) {
        if (!isFileName(archive.url.fileName()))
            throw RuntimeProvisionError::manifest(QStringLiteral("a download has no usable name"));
    }
    for (const auto &license : plan.licenses) {
        if (!isFileName(license.id))
            throw RuntimeProvisionError::manifest(QStringLiteral("a licence has no usable name"));
    }

    const auto paths = selectedPaths();
    const auto root = AndroidRuntimePaths::managedRoot(m_platform);
    const auto downloads = root + QStringLiteral("/downloads");
    makeFolder(downloads);
    makeFolder(paths.sdkRoot);
    // What a killed run left half fetched is never taken up again.
    const QDir folder(downloads);
    for (const auto &rest : folder.entryList({QStringLiteral("*.part")}, QDir::Files | QDir::Hidden))
        QFile::remove(folder.filePath(rest));

    for (const auto &archive : plan.archives) {
        const auto file = downloads + QLatin1Char('/') + archive.url.fileName();
        co_await fetch(archive, file);
        co_await verify(archive, file);
        const auto destination = unpackFolder(paths, archive);
        co_await unpack(archive, file, destination);
    }

    setPhase(Installing{QStringLiteral("Creating Quillnest Android device…")});
    AVDDefinition::write(paths, m_platform.profile);
    writeAtomically(
        root + QStringLiteral("/runtime-manifest.json"),
        manifestOf(plan, acceptedLicenses, m_platform.clock->wallTime()));
    for (const auto &license : plan.licenses) {
        const auto licenses = paths.sdkRoot + QStringLiteral("/licenses");
        makeFolder(licenses);
        writeAtomically(licenses + QLatin1Char('/') + license.id + QStringLiteral(".txt"), license.text.toUtf8());
    }
    QDir(downloads).removeRecursively();
}

Task<> AndroidRuntimeProvisioner::fetch(const RuntimeArchive &archive, const QString &file)
{
    const QPointer<AndroidRuntimeProvisioner> self(this);
    // In the background: an image takes seconds.
    auto check = [file] { return sumIfReadable(file); };
    const auto known = co_await background(*m_platform.executor, std::move(check));
    if (!self)
        throw AndroidRuntimeCancelled();
    if (!known.isEmpty() && known == archive.sha1)
        co_return;

    const auto label = archive.label();
    setPhase(Downloading{label, 0});
    const auto started = m_platform.clock->monotonic();
    DownloadDelegate delegate(m_platform, file, archive.size, [self, label](qint64 written, qint64 expected) {
        if (self)
            self->setPhase(
                Downloading{label, expected < 1 ? 0 : static_cast<double>(written) / static_cast<double>(expected)});
    });
    co_await delegate.run(archive.url);
    if (!self)
        throw AndroidRuntimeCancelled();
    m_log->write(QStringLiteral("downloaded %1 in %2s")
                     .arg(archive.url.fileName())
                     .arg(secondsBetween(started, m_platform.clock->monotonic()), 0, 'f', 1));
}

Task<> AndroidRuntimeProvisioner::verify(const RuntimeArchive &archive, const QString &file)
{
    const QPointer<AndroidRuntimeProvisioner> self(this);
    setPhase(Installing{QStringLiteral("Verifying %1…").arg(archive.label())});
    auto sum = [file] { return sha1OfFile(file); };
    const auto found = co_await background(*m_platform.executor, std::move(sum));
    if (!self)
        throw AndroidRuntimeCancelled();
    if (found != archive.sha1)
        throw RuntimeProvisionError::checksum(archive.label());
}

Task<> AndroidRuntimeProvisioner::unpack(const RuntimeArchive &archive, const QString &file, const QString &destination)
{
    const QPointer<AndroidRuntimeProvisioner> self(this);
    setPhase(Installing{QStringLiteral("Unpacking %1…").arg(archive.label())});
    makeFolder(destination);
    auto work = [archives = m_platform.archives, file, destination] { return archives->unpack(file, destination); };
    const bool unpacked = co_await background(*m_platform.executor, std::move(work));
    if (!self)
        throw AndroidRuntimeCancelled();
    if (!unpacked)
        throw RuntimeProvisionError::extract(archive.label());
    m_log->write(QStringLiteral("installed %1 %2 into %3").arg(archive.packagePath, archive.revision, destination));
}

void AndroidRuntimeProvisioner::reset()
{
    if (std::holds_alternative<Downloading>(m_phase) || std::holds_alternative<Installing>(m_phase))
        return;
    ++m_round;
    m_plan.reset();
    if (!std::holds_alternative<Idle>(m_phase))
        m_phase = Idle{};
    Q_EMIT changed();
}

void AndroidRuntimeProvisioner::setPhase(Phase phase)
{
    if (phase == m_phase)
        return;
    m_phase = std::move(phase);
    Q_EMIT changed();
}

} // namespace quillnest
