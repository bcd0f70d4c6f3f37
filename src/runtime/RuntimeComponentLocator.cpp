#include "runtime/RuntimeComponentLocator.h"

#include "platform/Files.h"
#include "runtime/AndroidBridgeError.h"
#include "runtime/BridgeManifest.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace quillnest
{

namespace
{
const auto manifestPath = QStringLiteral("Resources/AndroidBridge/runtime-manifest.json");
const auto helpersPath = QStringLiteral("Helpers/AndroidBridge");

/// Lower-case hexadecimal SHA-256 of a file, read piece by piece; absent if it can't be read.
std::optional<QString> sha256(const QString &path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        return std::nullopt;
    return QString::fromLatin1(hash.result().toHex());
}
} // namespace

RuntimeComponentLocator::RuntimeComponentLocator(const Platform &platform) : m_platform(platform) { }

QString RuntimeComponentLocator::contents(const QString &path) const
{
    return m_platform.folders.bundle + QStringLiteral("/Contents/") + path;
}

bool RuntimeComponentLocator::hasBundledBridge() const
{
    return QFileInfo::exists(contents(manifestPath)) || QFileInfo(contents(helpersPath)).isDir();
}

AndroidBridgeComponents RuntimeComponentLocator::androidBridge()
{
    if (m_verifiedBundle)
        return *m_verifiedBundle;
    if (!hasBundledBridge())
        return developmentBridge();
    m_verifiedBundle = verifiedBundledBridge();
    return *m_verifiedBundle;
}

AndroidBridgeComponents RuntimeComponentLocator::developmentBridge() const
{
    const auto scrcpy = m_platform.profile.developmentScrcpy;
    if (!isExecutableFile(scrcpy))
        throw AndroidBridgeError::missing(QStringLiteral("scrcpy"));
    const auto prefix = QFileInfo(QFileInfo(QFileInfo(scrcpy).canonicalFilePath()).path()).path();
    return {
        .scrcpy = scrcpy,
        .server = prefix + QStringLiteral("/share/scrcpy/scrcpy-server"),
        .iconDirectory = prefix + QStringLiteral("/share/icons/hicolor/256x256/apps"),
        .source = AndroidBridgeComponents::Source::development,
        .version = QFileInfo(prefix).fileName(),
    };
}

AndroidBridgeComponents RuntimeComponentLocator::verifiedBundledBridge() const
{
    QFile file(contents(manifestPath));
    if (!file.open(QIODevice::ReadOnly))
        throw AndroidBridgeError::missing(QStringLiteral("runtime-manifest.json"));
    const auto manifest = BridgeManifest::parse(file.readAll());
    for (const auto &component : manifest.components) {
        const auto sum = sha256(contents(component.path));
        if (!sum)
            throw AndroidBridgeError::missing(component.path);
        if (*sum != component.sha256.toLower())
            throw AndroidBridgeError::corrupted(component.path);
    }

    const auto client = contents(helpersPath + QStringLiteral("/bin/scrcpy"));
    const auto server = contents(QStringLiteral("Resources/AndroidBridge/server/scrcpy-server"));
    const auto icons = contents(QStringLiteral("Resources/AndroidBridge/icons"));
    if (!QFileInfo::exists(server))
        throw AndroidBridgeError::missing(QStringLiteral("server/scrcpy-server"));
    return {
        .scrcpy = isExecutableFile(client) ? std::optional(client) : std::nullopt,
        .server = server,
        .iconDirectory = QFileInfo::exists(icons) ? std::optional(icons) : std::nullopt,
        .source = AndroidBridgeComponents::Source::bundled,
        .version = manifest.bridgeVersion,
    };
}

} // namespace quillnest
