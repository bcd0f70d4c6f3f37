#pragma once

#include "driver/TestDesktop.h"

#include <QUrl>

namespace quillnest::driver
{

/// The stand-in's package lists and archives on a test desktop, for the programs that are started there afterwards.
class PackageServer
{
public:
    explicit PackageServer(TestDesktop &desktop, const QStringList &arguments = {});
    ~PackageServer();
    PackageServer(const PackageServer &) = delete;
    PackageServer &operator=(const PackageServer &) = delete;

    /// From now on something goes wrong with each address that has `where` in it.
    void fault(const QString &name, const QString &argument, const QString &where) const;
    /// Nothing goes wrong any more.
    void clearFaults() const;
    /// The names of the files that were asked for, in order.
    QStringList requests() const;

private:
    QByteArray get(const QString &path) const;

    std::unique_ptr<QProcess> m_process;
    QUrl m_repository;
};

} // namespace quillnest::driver
