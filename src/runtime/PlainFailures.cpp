#include "runtime/PlainFailures.h"

namespace quillnest
{

namespace
{

struct Row {
    /// Any text with this in it.
    const char *sign;
    const char *sentence;
};

constexpr const char *damaged = "The file is damaged or holds no Android app. Download it again.";
constexpr const char *unsignedApp
    = "The app is not signed as Android wants it. Get the file from the app's own maker or store.";
constexpr const char *otherSigner
    = "An app of the same name from another maker is installed. Uninstall that one first, and try again.";
constexpr const char *otherProcessor
    = "The app is made for another kind of processor. Look for a universal file, or one for this processor.";
constexpr const char *fullDevice = "Android's storage is full. Uninstall apps that you don't need, and try again.";
constexpr const char *missingParts
    = "The app needs parts that this Android does not have, such as Google's services. Look for a version without.";
constexpr const char *inTheWay
    = "The app gets in the way of one that is installed. Uninstall that one first, and try again.";

/// The first that fits counts.
constexpr Row installRows[]{
    {"INSTALL_PARSE_FAILED_NO_CERTIFICATES", unsignedApp},
    {"INSTALL_PARSE_FAILED_INCONSISTENT_CERTIFICATES", unsignedApp},
    {"INSTALL_PARSE_FAILED_CERTIFICATE_ENCODING", unsignedApp},
    {"INSTALL_PARSE_FAILED", damaged},
    {"INSTALL_FAILED_INVALID_APK", damaged},
    {"INSTALL_FAILED_UPDATE_INCOMPATIBLE", otherSigner},
    {"INSTALL_FAILED_SHARED_USER_INCOMPATIBLE", otherSigner},
    {"INSTALL_FAILED_VERSION_DOWNGRADE",
     "A newer version of the app is installed. Uninstall that one first, or add a newer file."},
    {"INSTALL_FAILED_NO_MATCHING_ABIS", otherProcessor},
    {"INSTALL_FAILED_CPU_ABI_INCOMPATIBLE", otherProcessor},
    {"INSTALL_FAILED_OLDER_SDK", "The app needs a newer version of Android. Switch to one, and try again."},
    {"INSTALL_FAILED_NEWER_SDK", "The app is made for an older version of Android. Look for a newer file."},
    {"INSTALL_FAILED_DEPRECATED_SDK_VERSION",
     "The app is made for an older version of Android. Look for a newer file."},
    {"INSTALL_FAILED_INSUFFICIENT_STORAGE", fullDevice},
    {"No space left on device", fullDevice},
    {"not enough space", fullDevice},
    {"INSTALL_FAILED_MISSING_SHARED_LIBRARY", missingParts},
    {"INSTALL_FAILED_MISSING_FEATURE", missingParts},
    {"INSTALL_FAILED_MISSING_SPLIT", "The file is one part of several. Look for the whole app in one file."},
    {"INSTALL_FAILED_TEST_ONLY",
     "The file is a test version, which Android does not install. Look for a released one."},
    {"INSTALL_FAILED_DUPLICATE_PERMISSION", inTheWay},
    {"INSTALL_FAILED_CONFLICTING_PROVIDER", inTheWay},
    {"INSTALL_FAILED", "Android refused to install the app."},
    {"failed to stat", "The app's file is gone. Put it back, or add the app again."},
    {"device offline", "Android does not answer. Wait a moment, and try again."},
    {"device not found", "Android does not answer. Wait a moment, and try again."},
};

constexpr const char *noNetwork
    = "Google's servers can't be reached. Check the connection to the internet, and try again.";
constexpr const char *fullDisk = "The disk is full. Make room on it, and try again.";

constexpr Row setupRows[]{
    {"No space left on device", fullDisk},
    {"Disk quota exceeded", fullDisk},
    {"onnection refused", noNetwork},
    {"onnection closed", noNetwork},
    {"closed the connection", noNetwork},
    {"timed out", noNetwork},
    {"not found", noNetwork},
    {"name resolution", noNetwork},
    {"nreachable", noNetwork},
    {"Network access is disabled", noNetwork},
};

template <std::size_t count> const char *sentenceFor(const Row (&rows)[count], const QString &words)
{
    for (const auto &row : rows) {
        if (words.contains(QLatin1String(row.sign)))
            return row.sentence;
    }
    return nullptr;
}

QString together(const char *sentence, const QString &words)
{
    return sentence ? QStringLiteral("%1 (%2)").arg(QLatin1String(sentence), words.simplified()) : words;
}

} // namespace

QString PlainFailures::ofInstall(const QString &words)
{
    return together(sentenceFor(installRows, words), words);
}

QString PlainFailures::ofSetup(const QString &words)
{
    return together(sentenceFor(setupRows, words), words);
}

} // namespace quillnest
