#include "runtime/InstallRecords.h"

#include "runtime/RuntimeSettings.h"

#include <QDateTime>
#include <QFileInfo>

#include <array>
#include <charconv>

namespace quillnest
{

namespace
{
const auto fingerprintField = QStringLiteral("fingerprint");
const auto packageField = QStringLiteral("package");

/// The first day of the year 1 as desktop calendars count it, in seconds since 1970.
constexpr double distantPast = -62135769600.0;

/// The shortest decimal form that reads back to the same value, never with an exponent.
QString shortest(double value)
{
    std::array<char, 512> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed).ptr;
    return QString::fromLatin1(text.data(), end - text.data());
}

std::optional<QString> textField(const QVariantMap &record, const QString &field)
{
    const auto value = record.value(field);
    return value.typeId() == QMetaType::QString ? std::optional(value.toString()) : std::nullopt;
}
} // namespace

QString InstallRecords::key(const QString &apkPath)
{
    return RuntimeSettings::installed.key(apkPath);
}

QString InstallRecords::fingerprint(const QString &apkPath)
{
    const QFileInfo file(apkPath);
    const qint64 size = file.exists() ? file.size() : -1;
    const auto modified = file.lastModified();
    const double time = modified.isValid() ? static_cast<double>(modified.toMSecsSinceEpoch()) / 1000.0 : distantPast;
    return QStringLiteral("%1-%2").arg(QString::number(size), shortest(time));
}

std::optional<QString> InstallRecords::package(const SettingsStore &settings, const QString &apkPath)
{
    return textField(settings.value(key(apkPath)).toMap(), packageField);
}

std::optional<QString>
InstallRecords::package(const SettingsStore &settings, const QString &apkPath, const QString &matchingFingerprint)
{
    const auto record = settings.value(key(apkPath)).toMap();
    return textField(record, fingerprintField) == matchingFingerprint ? textField(record, packageField) : std::nullopt;
}

void InstallRecords::write(
    SettingsStore &settings, const QString &apkPath, const QString &fingerprint, const QString &package)
{
    settings.setValue(key(apkPath), QVariantMap{{fingerprintField, fingerprint}, {packageField, package}});
}

} // namespace quillnest
