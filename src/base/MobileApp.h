#pragma once

#include <QDateTime>
#include <QString>
#include <QUuid>

#include <optional>

namespace quillnest
{

enum class MobilePlatform { android, ios };

/// One entry of the library. Identified by `id`.
struct MobileApp {
    QUuid id;
    /// The name as first read; later replaced by the app's label.
    QString name;
    MobilePlatform platform = MobilePlatform::android;
    /// Absolute path of the package file on this machine.
    QString sourcePath;
    /// Android package or iOS bundle identifier; may be absent for files that the user added.
    std::optional<QString> bundleIdentifier;
    QDateTime addedAt;
    bool isFavorite = false;

    /// `name` without a version and what follows it; `name` itself if that would leave nothing.
    QString displayName() const;

    bool operator==(const MobileApp &) const = default;
};

/// The form in which ids stand in files and settings: upper-case 8-4-4-4-12.
QString uuidText(const QUuid &id);

/// The text that a platform has in files; the other way round it is absent for an unknown text.
QString platformText(MobilePlatform platform);
std::optional<MobilePlatform> platformFromText(const QString &text);

} // namespace quillnest
