#pragma once

#include "packages/PackageArchive.h"

namespace standin
{

/// An archive as a list has it.
struct ListedArchive {
    QString package;
    QString address;
    qint64 size = 0;
    QByteArray sha1;
};

/// The two lists, in the shape of the vendor's: with packages on several channels, in several revisions, for other
/// hosts, and of no use here. Only what is given can be fetched.
QByteArray toolsList(const QList<ListedArchive> &archives);
QByteArray imagesList(const QList<ListedArchive> &archives);

} // namespace standin
