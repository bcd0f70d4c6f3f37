#pragma once

#include "common/UniqueFd.h"
#include "device/Device.h"

#include <functional>

namespace standin
{

/// The emulator's console: lines of text on the loopback address, each answered by "OK" or "KO: reason". All but a
/// few words need the token that lies in the user's home folder.
class ConsoleServer
{
public:
    ConsoleServer(Device &device, std::function<void()> kill);
    bool start(quint16 port);

private:
    void serve(const UniqueFd &connection);
    /// The answer to one line; `authenticated` is this connection's. Empty closes the connection.
    QByteArray answer(const QByteArray &line, bool &authenticated);

    Device &m_device;
    const std::function<void()> m_kill;
    QByteArray m_token;
    QByteArray m_tokenFile;
    UniqueFd m_listener;
};

} // namespace standin
