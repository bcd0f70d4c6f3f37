#include "device/ApkInfo.h"

#include "common/RunProgram.h"

#include <QFile>
#include <QRegularExpression>

namespace standin
{

namespace
{

using namespace Qt::StringLiterals;

/// The text between quotes behind `name=` in a badging line.
QString attribute(const QString &line, const QString &name)
{
    const QRegularExpression pattern(u"\\b"_s + name + u"='([^']*)'"_s);
    return pattern.match(line).captured(1);
}

bool isZip(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) && file.read(4) == QByteArray("PK\x03\x04", 4);
}

} // namespace

std::optional<ApkInfo> ApkInfo::read(const QString &file, QString *problem)
{
    if (!isZip(file)) {
        *problem = u"INSTALL_PARSE_FAILED_NOT_APK: Failed to parse %1"_s;
        return std::nullopt;
    }
    const std::optional<QByteArray> badging = outputOf(u"aapt2"_s, {u"dump"_s, u"badging"_s, file});
    if (!badging) {
        *problem = u"INSTALL_PARSE_FAILED_UNEXPECTED_EXCEPTION: Failed to parse %1: Corrupt XML binary file"_s;
        return std::nullopt;
    }
    ApkInfo info;
    int bestDensity = 0;
    static const QRegularExpression iconLine(u"^application-icon-(\\d+):'([^']+)'"_s);
    for (const QString &line : QString::fromUtf8(*badging).split(u'\n')) {
        if (line.startsWith(u"package:")) {
            info.package = attribute(line, u"name"_s);
            info.versionCode = attribute(line, u"versionCode"_s).toLongLong();
            info.versionName = attribute(line, u"versionName"_s);
            info.split = attribute(line, u"split"_s);
        } else if (line.startsWith(u"sdkVersion:")) {
            info.minSdk = line.section(u'\'', 1, 1).toInt();
        } else if (line.startsWith(u"application-label:")) {
            info.label = line.mid(19).chopped(1);
        } else if (line.startsWith(u"launchable-activity:") && info.activity.isEmpty()) {
            info.activity = attribute(line, u"name"_s);
        } else if (const auto icon = iconLine.match(line); icon.hasMatch()) {
            const int density = icon.captured(1).toInt();
            const QString entry = icon.captured(2);
            const bool isRaster = !entry.endsWith(u".xml"_s);
            if (isRaster && density < 65534 && density > bestDensity) { // above stand "any" and "none"
                bestDensity = density;
                info.iconEntry = entry;
            }
        }
    }
    if (info.package.isEmpty()) {
        *problem = u"INSTALL_PARSE_FAILED_MANIFEST_MALFORMED: Failed to parse %1"_s;
        return std::nullopt;
    }
    if (info.label.isEmpty())
        info.label = info.package;
    return info;
}

QImage ApkInfo::icon(const QString &file) const
{
    if (iconEntry.isEmpty())
        return {};
    // The entry's name is a pattern to unzip; brackets and stars in it must not act as one.
    QString name = iconEntry;
    name.replace(QRegularExpression(u"([\\[\\]*?\\\\])"_s), u"\\\\1"_s);
    return QImage::fromData(outputOf(u"unzip"_s, {u"-p"_s, file, name}).value_or(QByteArray()));
}

} // namespace standin
