#pragma once

#include <QString>
#include <QUrl>

#include <vector>

namespace quillnest
{

/// One archive that is to be downloaded.
struct RuntimeArchive {
    /// Path of its SDK package: "platform-tools", "system-images;android-35;default;x86_64".
    QString packagePath;
    /// The package's name for people; may be empty.
    QString displayName;
    /// "{major}.{minor}.{micro}"
    QString revision;
    /// Absolute.
    QUrl url;
    /// In bytes, as the list says; 0 if it doesn't.
    qint64 size = 0;
    /// Lower-case hexadecimal digits.
    QString sha1;
    QString licenseID;

    /// What people are told of it.
    QString label() const { return displayName.isEmpty() ? packagePath : displayName; }

    bool operator==(const RuntimeArchive &) const = default;
};

struct RuntimeLicense {
    QString id;
    QString text;

    bool operator==(const RuntimeLicense &) const = default;
};

/// What a user consents to: the archives in the order in which they are installed, and the licences that go with them.
struct RuntimePlan {
    std::vector<RuntimeArchive> archives;
    std::vector<RuntimeLicense> licenses;

    bool operator==(const RuntimePlan &) const = default;
};

} // namespace quillnest
