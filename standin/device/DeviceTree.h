#pragma once

#include <QString>
#include <QStringList>

namespace standin
{

/// The folder on the host that is the device's root, and the paths into it. The tree has a real shell and its tools;
/// what only Android has is a link to our device tool, which asks the device through the socket at `toolSocket`.
class DeviceTree
{
public:
    explicit DeviceTree(QString root);

    /// Lays what is missing and leaves the rest alone. False with `problem` filled in when that cannot be done.
    bool lay(const QString &deviceTool, const QStringList &androidCommands, QString *problem) const;

    QString root() const { return m_root; }
    QString toolSocket() const { return m_root + QStringLiteral("/dev/socket/device"); }
    /// The host's path of a device path. Symbolic links are followed as the device would, and never out of the tree.
    QString hostPath(const QString &devicePath) const;
    /// As hostPath, but leaves a link in the last component alone.
    QString hostPathOfLink(const QString &devicePath) const;

private:
    QString resolve(const QString &devicePath, bool followLast) const;

    const QString m_root;
};

} // namespace standin
