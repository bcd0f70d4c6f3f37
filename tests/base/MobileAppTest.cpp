#include "base/MobileApp.h"

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
QString displayName(const char *name)
{
    MobileApp app;
    app.name = QString::fromUtf8(name);
    return app.displayName();
}
} // namespace

TEST(MobileApp, theDisplayNameEndsBeforeTheVersion)
{
    EXPECT_EQ(displayName("Signal-v7.1.2-release"), QStringLiteral("Signal"));
    EXPECT_EQ(displayName("Maps_10 beta"), QStringLiteral("Maps"));
    EXPECT_EQ(displayName("Notes 3"), QStringLiteral("Notes"));
    EXPECT_EQ(displayName("Two Words"), QStringLiteral("Two Words"));
    EXPECT_EQ(displayName("Chess2Play"), QStringLiteral("Chess2Play"));
}

TEST(MobileApp, aNameThatIsAllVersionStays)
{
    EXPECT_EQ(displayName("-2.0"), QStringLiteral("-2.0"));
    EXPECT_EQ(displayName(""), QString());
}

TEST(MobileApp, idsAreUpperCase)
{
    const auto id = QUuid(QStringLiteral("{0a1b2c3d-4e5f-6071-8293-a4b5c6d7e8f9}"));
    EXPECT_EQ(uuidText(id), QStringLiteral("0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9"));
    EXPECT_EQ(QUuid(uuidText(id)), id);
}

TEST(MobileApp, platformsHaveTextsBothWays)
{
    for (const auto platform : {MobilePlatform::android, MobilePlatform::ios})
        EXPECT_EQ(platformFromText(platformText(platform)), platform);
    EXPECT_EQ(platformText(MobilePlatform::android), QStringLiteral("Android"));
    EXPECT_EQ(platformFromText(QStringLiteral("android")), std::nullopt);
}
