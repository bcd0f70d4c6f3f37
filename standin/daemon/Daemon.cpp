#include "daemon/Daemon.h"

#include "common/Sockets.h"
#include "daemon/ReverseService.h"
#include "daemon/ShellService.h"
#include "daemon/SyncService.h"

#include <QFile>

namespace standin
{

using namespace Qt::StringLiterals;

Daemon::Daemon(Device &device) : m_device(device) { }

bool Daemon::start(quint16 port)
{
    m_listener = listenOnLoopback(port);
    if (!m_listener.isValid())
        return false;
    serveEachConnection(m_listener.get(), [this](UniqueFd connection) { serve(std::move(connection)); });
    return true;
}

std::shared_ptr<AdbStream> Daemon::connectAbstract(const QByteArray &name)
{
    std::vector<std::weak_ptr<AdbTransport>> transports;
    {
        const std::lock_guard lock(m_mutex);
        transports = m_transports;
    }
    for (const auto &weak : transports) {
        const auto transport = weak.lock();
        if (!transport)
            continue;
        if (const std::optional<QByteArray> remote = transport->reverses().find("localabstract:" + name))
            return transport->open(*remote);
    }
    return nullptr;
}

void Daemon::serve(UniqueFd connection)
{
    const auto transport = std::make_shared<AdbTransport>(
        std::move(connection), banner(),
        [this](const std::shared_ptr<AdbTransport> &via, const QByteArray &name) { return serviceFor(via, name); });
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_transports, [](const auto &weak) { return weak.expired(); });
        m_transports.push_back(transport);
    }
    transport->run();
    transport->reverses().clear(); // tunnels end with the server that asked for them
}

AdbTransport::Service Daemon::serviceFor(const std::shared_ptr<AdbTransport> &transport, const QByteArray &name)
{
    if (const std::optional<ShellService> shell = ShellService::parse(name)) {
        return [this, shell = *shell](const std::shared_ptr<AdbStream> &stream) {
            if (!shell.command().isEmpty())
                m_device.journal.add(u"shellCommands"_s, u"$ "_s + QString::fromUtf8(shell.command()));
            shell.serve(QFile::encodeName(m_device.tree.root()), *stream);
        };
    }
    if (name == "sync:") {
        return [this](const std::shared_ptr<AdbStream> &stream) { SyncService(m_device.tree, *stream).serve(); };
    }
    if (name.startsWith("reverse:")) {
        return [transport, request = name.mid(8)](const std::shared_ptr<AdbStream> &stream) {
            serveReverse(*transport, request, *stream);
        };
    }
    return {};
}

QByteArray Daemon::banner() const
{
    return u"device::ro.product.name=%1;ro.product.model=%2;ro.product.device=%3;"
           "features=shell_v2,cmd,stat_v2,fixed_push_mkdir"_s
               .arg(
                   m_device.property(u"ro.product.name"_s), m_device.property(u"ro.product.model"_s),
                   m_device.property(u"ro.product.device"_s))
               .toUtf8();
}

} // namespace standin
