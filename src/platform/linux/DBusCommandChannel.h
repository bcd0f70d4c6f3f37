#pragma once

#include "platform/CommandChannel.h"

namespace quillnest
{

/// The command channel as a signal on the session bus: interface "app.quillnest.command", member "command", one text
/// argument, from the object "/app/quillnest/command" of whoever sends it.
class DBusCommandChannel : public CommandChannel
{
    Q_OBJECT

public:
    bool listen() override;
    bool post(const QString &command) override;
};

} // namespace quillnest
