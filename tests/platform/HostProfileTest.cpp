#include "platform/HostProfile.h"

#include "platform/HostServices.h"

#include <QDir>

#include <cstdlib>

#include <gtest/gtest.h>

using namespace quillnest;

TEST(HostProfileTest, appleSilicon)
{
    const auto profile = HostProfile::appleSilicon();
    EXPECT_EQ(profile.machineWord, QStringLiteral("Mac"));
    EXPECT_EQ(profile.imageAbi, QStringLiteral("arm64-v8a"));
    EXPECT_EQ(profile.cpuArchitecture, QStringLiteral("arm64"));
    EXPECT_EQ(profile.sdkHostOs, QStringLiteral("macosx"));
    EXPECT_EQ(profile.sdkHostArchitectures, (QStringList{QStringLiteral("aarch64"), QStringLiteral("arm64")}));
    EXPECT_EQ(profile.processorName, QStringLiteral("Apple Silicon"));
    EXPECT_EQ(profile.developerSdk, QStringLiteral("Library/Android/sdk"));
}

TEST(HostProfileTest, linuxOnX86)
{
    const auto profile = HostProfile::linuxX86_64();
    EXPECT_EQ(profile.machineWord, QStringLiteral("PC"));
    EXPECT_EQ(profile.imageAbi, QStringLiteral("x86_64"));
    EXPECT_EQ(profile.cpuArchitecture, QStringLiteral("x86_64"));
    EXPECT_EQ(profile.sdkHostOs, QStringLiteral("linux"));
    EXPECT_EQ(profile.sdkHostArchitectures, (QStringList{QStringLiteral("x64"), QStringLiteral("x86_64")}));
    for (const auto &home : profile.javaHomes)
        EXPECT_TRUE(QDir::isAbsolutePath(home));
}

namespace
{
/// Sets a variable for as long as it lives.
class Variable
{
public:
    Variable(const char *name, const char *value)
        : m_name(name), m_set(qEnvironmentVariableIsSet(name)), m_old(qgetenv(name))
    {
        qputenv(name, value);
    }
    ~Variable()
    {
        if (m_set)
            qputenv(m_name, m_old);
        else
            qunsetenv(m_name);
    }
    Variable(const Variable &) = delete;
    Variable &operator=(const Variable &) = delete;

private:
    const char *const m_name;
    const bool m_set;
    const QByteArray m_old;
};
} // namespace

TEST(LinuxFoldersTest, baseFoldersComeFromTheEnvironment)
{
    const Variable data("XDG_DATA_HOME", "/base/data/");
    const Variable state("XDG_STATE_HOME", "/base/../state");
    const auto folders = hostFolders();
    EXPECT_EQ(folders.applicationSupport, QStringLiteral("/base/data"));
    EXPECT_EQ(folders.logs, QStringLiteral("/state/Quillnest/Logs"));
}

TEST(LinuxFoldersTest, emptyOrRelativeBaseFoldersCountAsUnset)
{
    const Variable home("HOME", "/home/somebody");
    const Variable data("XDG_DATA_HOME", "");
    const Variable state("XDG_STATE_HOME", "relative/state");
    const auto folders = hostFolders();
    EXPECT_EQ(folders.home, QStringLiteral("/home/somebody"));
    EXPECT_EQ(folders.applicationSupport, QStringLiteral("/home/somebody/.local/share"));
    EXPECT_EQ(folders.logs, QStringLiteral("/home/somebody/.local/state/Quillnest/Logs"));
}
