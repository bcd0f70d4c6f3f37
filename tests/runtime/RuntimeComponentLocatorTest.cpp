#include "runtime/RuntimeComponentLocator.h"
#include "fakes/FakePlatform.h"
#include "runtime/AndroidBridgeError.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
class RuntimeComponentLocatorTest : public ::testing::Test
{
protected:
    RuntimeComponentLocatorTest()
    {
        fakes.platform.profile.developmentScrcpy = fakes.path(QStringLiteral("brew/bin/scrcpy"));
    }

    QString contents(const QString &path) const { return QStringLiteral("Quillnest.app/Contents/") + path; }
    void putServer(const QByteArray &bytes) { fakes.writeFile(contents(server), bytes); }
    void putManifest(const QByteArray &json)
    {
        fakes.writeFile(contents(QStringLiteral("Resources/AndroidBridge/runtime-manifest.json")), json);
    }
    static QByteArray component(const QString &path, const QByteArray &bytes)
    {
        const auto sum = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
        return "{\"path\":\"" + path.toUtf8() + "\",\"sha256\":\"" + sum + "\"}";
    }
    std::optional<QString> failure(RuntimeComponentLocator &locator) const
    {
        try {
            locator.androidBridge();
        } catch (const AndroidBridgeError &error) {
            return error.description();
        }
        return std::nullopt;
    }
    std::optional<QString> failure() const
    {
        RuntimeComponentLocator locator(fakes.platform);
        return failure(locator);
    }

    const QString server = QStringLiteral("Resources/AndroidBridge/server/scrcpy-server");
    FakePlatform fakes = fakePlatform();
};
} // namespace

TEST_F(RuntimeComponentLocatorTest, aWholeBundleIsVerifiedAndDescribed)
{
    putServer("server");
    fakes.writeFile(contents(QStringLiteral("Helpers/AndroidBridge/bin/scrcpy")), "client", true);
    fakes.writeFile(contents(QStringLiteral("Resources/AndroidBridge/icons/a.png")), "");
    putManifest(
        "{\"bridgeVersion\":\"5.0.1\",\"components\":[" + component(server, "server") + ","
        + component(QStringLiteral("Helpers/AndroidBridge/bin/scrcpy"), "client") + "]}");
    RuntimeComponentLocator locator(fakes.platform);
    EXPECT_TRUE(locator.hasBundledBridge());
    EXPECT_EQ(
        locator.androidBridge(),
        (AndroidBridgeComponents{
            fakes.path(contents(QStringLiteral("Helpers/AndroidBridge/bin/scrcpy"))), fakes.path(contents(server)),
            fakes.path(contents(QStringLiteral("Resources/AndroidBridge/icons"))),
            AndroidBridgeComponents::Source::bundled, QStringLiteral("5.0.1")}));
}

TEST_F(RuntimeComponentLocatorTest, aBundleWithoutClientAndIconsIsComplete)
{
    putServer("server");
    putManifest("{\"components\":[" + component(server, "server") + "]}");
    RuntimeComponentLocator locator(fakes.platform);
    const auto bridge = locator.androidBridge();
    EXPECT_EQ(bridge.scrcpy, std::nullopt);
    EXPECT_EQ(bridge.iconDirectory, std::nullopt);
    EXPECT_EQ(bridge.version, std::nullopt);
}

TEST_F(RuntimeComponentLocatorTest, anEmptyListDependsOnTheServerAlone)
{
    putManifest("{\"components\":[]}");
    EXPECT_EQ(
        failure(),
        QStringLiteral("Quillnest's Android bridge is incomplete (server/scrcpy-server is missing). Reinstall "
                       "Quillnest."));
    putServer("anything");
    EXPECT_EQ(failure(), std::nullopt);
}

TEST_F(RuntimeComponentLocatorTest, sumsInUpperCaseMatch)
{
    putServer("server");
    const auto sum = QCryptographicHash::hash("server", QCryptographicHash::Sha256).toHex().toUpper();
    putManifest("{\"components\":[{\"path\":\"" + server.toUtf8() + "\",\"sha256\":\"" + sum + "\"}]}");
    EXPECT_EQ(failure(), std::nullopt);
}

TEST_F(RuntimeComponentLocatorTest, aComponentChangedByOneByteIsCorrupted)
{
    putServer("serveR");
    putManifest("{\"components\":[" + component(server, "server") + "]}");
    EXPECT_EQ(
        failure(),
        QStringLiteral("Quillnest's Android bridge failed its integrity check (%1). Reinstall Quillnest.").arg(server));
}

TEST_F(RuntimeComponentLocatorTest, aMissingComponentIsNamedAndTheFirstFailureCounts)
{
    putServer("server");
    putManifest("{\"components\":[" + component(QStringLiteral("a/b"), "") + "," + component(server, "other") + "]}");
    EXPECT_EQ(
        failure(), QStringLiteral("Quillnest's Android bridge is incomplete (a/b is missing). Reinstall Quillnest."));
}

TEST_F(RuntimeComponentLocatorTest, helpersWithoutAManifestAreABundleAndFail)
{
    fakes.writeFile(contents(QStringLiteral("Helpers/AndroidBridge/bin/scrcpy")), "", true);
    fakes.writeFile(QStringLiteral("brew/bin/scrcpy"), "", true);
    EXPECT_EQ(
        failure(),
        QStringLiteral("Quillnest's Android bridge is incomplete (runtime-manifest.json is missing). Reinstall "
                       "Quillnest."));
}

TEST_F(RuntimeComponentLocatorTest, aManifestThatCannotBeReadSaysWhy)
{
    for (const auto *json :
         {"", "{", "[]", "{}", "{\"components\":{}}", "{\"components\":[1]}", "{\"components\":[{\"path\":\"a\"}]}",
          "{\"components\":[{\"path\":1,\"sha256\":\"\"}]}", "{\"components\":[],\"bridgeVersion\":5}"}) {
        putManifest(json);
        EXPECT_TRUE(failure().value_or(QString()).startsWith(
            QStringLiteral("Quillnest's Android bridge manifest could not be read: ")))
            << json;
    }
}

TEST_F(RuntimeComponentLocatorTest, aVerifiedBundleIsRememberedAndAFailedOneIsNot)
{
    putManifest("{\"components\":[" + component(server, "server") + "]}");
    RuntimeComponentLocator locator(fakes.platform);
    EXPECT_NE(failure(locator), std::nullopt);
    putServer("server");
    EXPECT_EQ(failure(locator), std::nullopt);
    putServer("changed");
    EXPECT_EQ(failure(locator), std::nullopt);
    EXPECT_NE(failure(), std::nullopt);
}

TEST_F(RuntimeComponentLocatorTest, aDevelopersKegIsTheFallBack)
{
    fakes.writeFile(QStringLiteral("brew/Cellar/scrcpy/5.0.1/bin/scrcpy"), "", true);
    QDir().mkpath(fakes.path(QStringLiteral("brew/bin")));
    QFile::link(
        fakes.path(QStringLiteral("brew/Cellar/scrcpy/5.0.1/bin/scrcpy")),
        fakes.path(QStringLiteral("brew/bin/scrcpy")));
    RuntimeComponentLocator locator(fakes.platform);
    EXPECT_FALSE(locator.hasBundledBridge());
    const auto keg = QDir(fakes.path(QStringLiteral("brew/Cellar/scrcpy/5.0.1"))).canonicalPath();
    EXPECT_EQ(
        locator.androidBridge(),
        (AndroidBridgeComponents{
            fakes.path(QStringLiteral("brew/bin/scrcpy")), keg + QStringLiteral("/share/scrcpy/scrcpy-server"),
            keg + QStringLiteral("/share/icons/hicolor/256x256/apps"), AndroidBridgeComponents::Source::development,
            QStringLiteral("5.0.1")}));
    QFile::remove(fakes.path(QStringLiteral("brew/bin/scrcpy")));
    EXPECT_EQ(
        failure(locator),
        QStringLiteral("Quillnest's Android bridge is incomplete (scrcpy is missing). Reinstall Quillnest."));
}
