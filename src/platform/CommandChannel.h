#pragma once

#include <QObject>
#include <QString>

namespace quillnest
{

/// The text command channel "app.quillnest.command": a broadcast that reaches every running instance in the user's
/// session. No authentication and no answer.
class CommandChannel : public QObject
{
    Q_OBJECT

public:
    /// Starts listening; false when the host's message bus can't be reached. Main thread.
    virtual bool listen() = 0;

    /// Sends a command to all listeners, this process included. False when the bus can't be reached.
    virtual bool post(const QString &command) = 0;

Q_SIGNALS:
    /// A command came in. Main thread.
    void received(const QString &command);
};

} // namespace quillnest
