#pragma once

#include <QImage>
#include <QString>
#include <optional>

namespace standin
{

/// What the device needs to know of a package file. Read with the host's `aapt2` and `unzip`.
struct ApkInfo {
    QString package;
    QString split; ///< of an additional file; empty for a base package
    QString label;
    QString activity; ///< the launchable one, a full class name; empty when there is none
    QString versionName;
    qint64 versionCode = 0;
    int minSdk = 1;
    QString iconEntry; ///< the raster icon of the highest density; empty when there is none

    /// On failure `problem` holds what `pm` says in brackets.
    static std::optional<ApkInfo> read(const QString &file, QString *problem);
    QImage icon(const QString &file) const;
};

} // namespace standin
