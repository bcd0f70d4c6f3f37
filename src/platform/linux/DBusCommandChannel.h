#pragma once

#include "platform/CommandChannel.h"

class QDBusMessage;

namespace quillnest
{

/// The command channel as a signal on the session bus: interface "app.quillnest.command", member "command", one text
/// argument, from the object "/app/quillnest/command" of whoever sends it. A signal without a text is the empty
/// command.
class DBusCommandChannel : public CommandChannel
{
    Q_OBJECT

public:
    bool listen() override;
    bool post(const QString &command) override;

private Q_SLOTS:
    void take(const QDBusMessage &message);
};

} // namespace quillnest
