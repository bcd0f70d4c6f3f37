#include "runtime/AndroidVersions.h"

#include "runtime/AndroidRuntimePaths.h"

#include <algorithm>

namespace quillnest
{

namespace
{
const AndroidVersions::Version *find(qint64 api)
{
    const auto version = std::find_if(
        AndroidVersions::all.begin(), AndroidVersions::all.end(),
        [api](const AndroidVersions::Version &candidate) { return candidate.api == api; });
    return version == AndroidVersions::all.end() ? nullptr : &*version;
}
} // namespace

int AndroidVersions::selected(const SettingsStore &settings)
{
    const auto *version = find(RuntimeSettings::androidAPI.value(settings));
    return version ? version->api : defaultApi;
}

QString AndroidVersions::name(int api)
{
    const auto *version = find(api);
    return version ? QString::fromLatin1(version->name) : QStringLiteral("Android (API %1)").arg(api);
}

std::vector<int> AndroidVersions::installed(const Platform &platform)
{
    std::vector<int> apis;
    for (const auto &version : all) {
        if (AndroidRuntimePaths::managed(platform, version.api).isComplete())
            apis.push_back(version.api);
    }
    return apis;
}

} // namespace quillnest
