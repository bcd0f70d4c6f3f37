#pragma once

#include "platform/InstanceDoor.h"
#include "platform/posix/Descriptor.h"

#include <QLocalServer>

#include <chrono>
#include <memory>

class QLocalSocket;

namespace quillnest
{

/// A lock on a file beside the data, which the kernel takes back from a process however it ends, and a socket beside it
/// for what later starts say: one JSON object in a line, answered by a line when it has been taken.
class PosixInstanceDoor : public InstanceDoor
{
    Q_OBJECT

public:
    /// How long a later start waits for the first one's answer.
    explicit PosixInstanceDoor(std::chrono::milliseconds patience = std::chrono::seconds(5)) : m_patience(patience) { }

    Entry enter(const QString &folder, const QStringList &arguments) override;

private:
    enum class Lock { taken, busy, impossible };
    Lock lock();
    void open();
    bool knock(const QByteArray &line, std::chrono::milliseconds patience) const;
    void listenTo(QLocalSocket &visitor);

    const std::chrono::milliseconds m_patience;
    QString m_folder;
    Descriptor m_lock;
    std::unique_ptr<QLocalServer> m_server;
};

} // namespace quillnest
