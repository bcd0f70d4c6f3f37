#include "runtime/PlainFailures.h"

#include <gtest/gtest.h>

using namespace quillnest;

TEST(PlainFailures, theCommonestInstallFailuresAreSentencesBeforeTheToolsWords)
{
    const auto said = [](const char *code) {
        return PlainFailures::ofInstall(
            QStringLiteral("adb: failed to install x.apk:\nFailure [%1: more]").arg(QLatin1String(code)));
    };
    EXPECT_EQ(
        said("INSTALL_PARSE_FAILED_NOT_APK"),
        QStringLiteral("The file is damaged or holds no Android app. Download it again. (adb: failed to install x.apk: "
                       "Failure [INSTALL_PARSE_FAILED_NOT_APK: more])"));
    const std::pair<const char *, const char *> expected[]{
        {"INSTALL_PARSE_FAILED_NO_CERTIFICATES", "The app is not signed"},
        {"INSTALL_FAILED_INVALID_APK", "The file is damaged"},
        {"INSTALL_FAILED_UPDATE_INCOMPATIBLE", "An app of the same name"},
        {"INSTALL_FAILED_VERSION_DOWNGRADE", "A newer version of the app"},
        {"INSTALL_FAILED_NO_MATCHING_ABIS", "The app is made for another kind of processor"},
        {"INSTALL_FAILED_OLDER_SDK", "The app needs a newer version of Android"},
        {"INSTALL_FAILED_DEPRECATED_SDK_VERSION", "The app is made for an older version"},
        {"INSTALL_FAILED_INSUFFICIENT_STORAGE", "Android's storage is full"},
        {"INSTALL_FAILED_MISSING_SPLIT", "The file is one part of several"},
        {"INSTALL_FAILED_SOMETHING_NEW", "Android refused to install the app"}};
    for (const auto &[code, sentence] : expected)
        EXPECT_TRUE(said(code).startsWith(QLatin1String(sentence))) << said(code).toStdString();
}

TEST(PlainFailures, whatIsNotKnownStaysAsItIs)
{
    EXPECT_EQ(
        PlainFailures::ofInstall(QStringLiteral("a new kind\nof trouble")), QStringLiteral("a new kind\nof trouble"));
    EXPECT_EQ(
        PlainFailures::ofSetup(QStringLiteral("Could not unpack Image")), QStringLiteral("Could not unpack Image"));
}

TEST(PlainFailures, aMissingNetworkAndAFullDiskAreSentences)
{
    for (const auto *words :
         {"Connection refused", "Host dl.google.com not found", "Network unreachable",
          "Download failed: Connection closed after 3 of 9 bytes", "Temporary failure in name resolution"})
        EXPECT_EQ(
            PlainFailures::ofSetup(QLatin1String(words)),
            QStringLiteral(
                "Google's servers can't be reached. Check the connection to the internet, and try again. (%1)")
                .arg(QLatin1String(words)));
    EXPECT_EQ(
        PlainFailures::ofSetup(QStringLiteral("/home/x: No space left on device")),
        QStringLiteral("The disk is full. Make room on it, and try again. (/home/x: No space left on device)"));
}
