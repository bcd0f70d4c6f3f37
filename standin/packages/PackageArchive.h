#pragma once

#include "packages/ZipWriter.h"

#include <QList>
#include <QString>

namespace standin
{

/// An archive that can be downloaded, and the package that it is of.
struct PackageArchive {
    /// Path of the package: "platform-tools", "system-images;android-35;default;x86_64".
    QString package;
    /// Address relative to the folder of the lists: "sys-img/android/x86_64-35_r01.zip".
    QString address;
    /// The one folder at its top: "platform-tools", "x86_64".
    QByteArray top;
    ZipWriter zip;
    QByteArray bytes;
};

/// How an archive is made hostile.
enum class Escape { none, dotDot, absolute, link };

/// The sum that the lists give, as they spell it.
QByteArray checksumOf(const QByteArray &bytes);

/// Packs what lies in an SDK folder as its packages come: links in it are packed as what they lead to. An image is
/// filled up to `imageBytes` with what no packer makes smaller.
QList<PackageArchive> packSdk(const QString &sdk, const QList<int> &apis, qint64 imageBytes);

/// The archive with an entry that leads out of the folder it is unpacked into, to a file "escaped".
QByteArray withEscape(const PackageArchive &archive, Escape escape);

} // namespace standin
