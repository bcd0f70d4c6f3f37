#include "runtime/InstallRecords.h"

#include "runtime/RuntimeSettings.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <chrono>
#include <filesystem>

namespace quillnest
{

namespace
{
const auto fingerprintField = QStringLiteral("fingerprint");
const auto packageField = QStringLiteral("package");

/// The first day of the year 1 as desktop calendars count it, in seconds since 1970.
const auto distantPast = QStringLiteral("-62135769600");

/// The nanoseconds of a file's time that don't make a millisecond; 0 where the file system has none.
qint64 beyondMilliseconds(const QString &path)
{
    using namespace std::chrono;
    std::error_code problem;
    const auto time = std::filesystem::last_write_time(QFile::encodeName(path).toStdString(), problem);
    return problem ? 0 : duration_cast<nanoseconds>(time - floor<milliseconds>(time)).count();
}

/// As seconds, without zeros at the end.
QString text(qint64 milliseconds, qint64 nanoseconds)
{
    const auto seconds = milliseconds < 0 ? -((999 - milliseconds) / 1000) : milliseconds / 1000;
    auto digits
        = QStringLiteral("%1").arg((milliseconds - 1000 * seconds) * 1'000'000 + nanoseconds, 9, 10, QLatin1Char('0'));
    while (digits.endsWith(QLatin1Char('0')))
        digits.chop(1);
    return QString::number(seconds) + (digits.isEmpty() ? QString() : QLatin1Char('.') + digits);
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
    const auto time
        = modified.isValid() ? text(modified.toMSecsSinceEpoch(), beyondMilliseconds(apkPath)) : distantPast;
    return QStringLiteral("%1-%2").arg(QString::number(size), time);
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
