#pragma once

#include "fakes/DeviceSocket.h"
#include "platform/HostServices.h"

#include <memory>

namespace quillnest
{

/// Both ends of one connection, for what reads or writes a socket without a whole client around it.
struct ConnectedSocket {
    std::shared_ptr<LocalListener> listener = hostSockets()->listen();
    DeviceSocket device{listener->port()};
    std::shared_ptr<StreamSocket> socket = listener->accept(30.0);

    /// The device sends all this and hangs up: what then reads comes to its end by itself.
    void sendAndClose(const QByteArray &bytes)
    {
        device.send(bytes);
        device.close();
    }
};

} // namespace quillnest
