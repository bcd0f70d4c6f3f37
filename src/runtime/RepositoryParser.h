#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <optional>
#include <vector>

namespace quillnest
{

/// What one package list of the Android SDK says. The format is the SDK's repository XML ("repository2", "sys-img2"),
/// whose elements are known here by their local names, whatever their namespace. What the list doesn't say is empty.
struct RepositoryList {
    struct Archive {
        QString url;
        /// In bytes; 0 if the list doesn't say it.
        qint64 size = 0;
        QString sha1;
        QString os;
        QString arch;
    };

    struct Package {
        QString path;
        QString displayName;
        /// "channel-0" is the stable one; empty counts as stable.
        QString channel;
        QString licenseRef;
        /// Major, minor, micro.
        std::vector<qint64> revision;
        std::vector<Archive> archives;
    };

    /// Texts by id, white space as it stands.
    QMap<QString, QString> licenses;
    std::vector<Package> packages;
};

/// Reads a package list; throws RuntimeProvisionError (manifest) for what is no XML. Any thread.
RepositoryList parseRepository(const QByteArray &xml);

} // namespace quillnest
