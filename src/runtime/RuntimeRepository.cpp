#include "runtime/RuntimeRepository.h"

#include "platform/Files.h"
#include "platform/Platform.h"
#include "runtime/AndroidRuntimePaths.h"
#include "runtime/AndroidVersions.h"
#include "runtime/RepositoryParser.h"
#include "runtime/RuntimeProvisionError.h"

#include <QFileInfo>

#include <algorithm>
#include <map>

namespace quillnest
{

namespace
{

using RuntimeRepository::Wanted;

/// The stable package of the greatest revision; of equal ones the first.
const RepositoryList::Package *newestStable(const RepositoryList &list, const QString &path)
{
    const RepositoryList::Package *newest = nullptr;
    for (const auto &package : list.packages) {
        const bool isStable = package.channel.isEmpty() || package.channel == u"channel-0";
        if (package.path == path && isStable && (!newest || package.revision > newest->revision))
            newest = &package;
    }
    return newest;
}

/// The archive for this host: one made for its processor, or else one that names none.
const RepositoryList::Archive *fitting(const std::vector<RepositoryList::Archive> &archives, const HostProfile &profile)
{
    const RepositoryList::Archive *universal = nullptr;
    for (const auto &archive : archives) {
        if (!archive.os.isEmpty() && archive.os != profile.sdkHostOs)
            continue;
        if (profile.sdkHostArchitectures.contains(archive.arch))
            return &archive;
        if (archive.arch.isEmpty() && !universal)
            universal = &archive;
    }
    return universal;
}

RuntimeArchive chosen(const RepositoryList &list, const Wanted &wanted, const HostProfile &profile)
{
    const auto *package = newestStable(list, wanted.path);
    const auto *archive = package ? fitting(package->archives, profile) : nullptr;
    if (!archive)
        throw RuntimeProvisionError::missingPackage(wanted.path, profile);
    const QUrl url(archive->url, QUrl::StrictMode);
    const auto absolute = wanted.base.resolved(url);
    if (archive->url.isEmpty() || !url.isValid() || !absolute.isValid() || absolute.fileName().isEmpty())
        throw RuntimeProvisionError::missingPackage(wanted.path, profile);

    QStringList revision;
    for (const auto part : package->revision)
        revision.append(QString::number(part));
    return {
        .packagePath = wanted.path,
        .displayName = package->displayName,
        .revision = revision.join(u'.'),
        .url = absolute,
        .size = archive->size,
        .sha1 = archive->sha1.toLower(),
        .licenseID = package->licenseRef,
    };
}

} // namespace

QString RuntimeRepository::image(const Platform &platform)
{
    const int api = AndroidVersions::selected(*platform.settings);
    return QStringLiteral("system-images;android-%1;default;%2")
        .arg(api)
        .arg(AndroidRuntimePaths::managed(platform, api).imageAbi);
}

std::vector<Wanted> RuntimeRepository::wanted(const Platform &platform)
{
    const auto &repository = platform.profile.sdkRepository;
    const auto systemImages = repository.resolved(QUrl(QStringLiteral("sys-img/android/")));
    const auto tools = repository.resolved(QUrl(QStringLiteral("repository2-3.xml")));
    const int api = AndroidVersions::selected(*platform.settings);
    const auto paths = AndroidRuntimePaths::managed(platform, api);

    std::vector<Wanted> result;
    if (!isExecutableFile(paths.adb()))
        result.push_back({QStringLiteral("platform-tools"), tools, repository});
    if (!isExecutableFile(paths.emulator()))
        result.push_back({QStringLiteral("emulator"), tools, repository});
    result.push_back({image(platform), systemImages.resolved(QUrl(QStringLiteral("sys-img2-3.xml"))), systemImages});
    return result;
}

Task<RuntimePlan> RuntimeRepository::plan(Platform platform)
{
    const auto packages = wanted(platform);
    std::map<QUrl, RepositoryList> lists;
    for (const auto &package : packages) {
        const auto url = package.manifest;
        if (lists.contains(url))
            continue;
        const auto answer = co_await platform.network->fetch(url);
        if (answer.status != 200) {
            throw RuntimeProvisionError::manifest(
                QStringLiteral("HTTP %1 for %2").arg(answer.status).arg(url.fileName()));
        }
        // A list has a megabyte or more.
        auto parse = [body = answer.body] { return parseRepository(body); };
        auto list = co_await background(*platform.executor, std::move(parse));
        lists.emplace(url, std::move(list));
    }

    RuntimePlan result;
    QMap<QString, QString> licenses;
    for (const auto &package : packages) {
        const auto &list = lists.at(package.manifest);
        const auto archive = chosen(list, package, platform.profile);
        const auto license = list.licenses.constFind(archive.licenseID);
        if (license != list.licenses.constEnd())
            licenses[archive.licenseID] = *license;
        result.archives.push_back(archive);
    }
    for (auto license = licenses.constBegin(); license != licenses.constEnd(); ++license)
        result.licenses.push_back({license.key(), license.value()});
    co_return std::move(result);
}

} // namespace quillnest
