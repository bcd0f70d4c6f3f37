#include "daemon/ShellService.h"

#include "common/Sockets.h"
#include "daemon/ShellProcess.h"

#include <QList>
#include <QtEndian>
#include <cstdio>
#include <poll.h>
#include <thread>

namespace standin
{

std::optional<ShellService> ShellService::parse(const QByteArray &name)
{
    const auto colon = name.indexOf(':');
    if (colon < 0)
        return std::nullopt;
    const QList<QByteArray> words = name.left(colon).split(',');
    ShellService service;
    service.m_command = name.mid(colon + 1);
    const bool isExec = words.first() == "exec";
    if (!isExec && words.first() != "shell")
        return std::nullopt;
    service.m_framed = words.contains("v2");
    service.m_merged = !service.m_framed;
    service.m_terminal = words.contains("pty") || (!isExec && !service.m_framed && service.m_command.isEmpty());
    for (const QByteArray &word : words) {
        if (word.startsWith("TERM="))
            service.m_terminalType = word.mid(5);
    }
    return service;
}

void ShellService::serve(const QByteArray &root, AdbStream &stream) const
{
    const auto streams = m_terminal ? ShellProcess::Streams::terminal
        : m_merged                  ? ShellProcess::Streams::merged
                                    : ShellProcess::Streams::separate;
    ShellProcess process(root, m_command, m_terminalType, streams);
    if (!process.isRunning()) {
        const QByteArray words = "cannot start the shell\n";
        stream.write(m_framed ? packet(Stderr, words) + packet(Exit, QByteArray(1, '\x7f')) : words);
        return;
    }
    std::thread input([&] {
        copyInput(stream, process);
        // The stream has ended: either the command did, and this changes nothing, or the host went away.
        if (stream.isClosed())
            process.kill();
    });
    copyOutput(stream, process);
    const int status = process.wait();
    if (m_framed)
        stream.write(packet(Exit, QByteArray(1, static_cast<char>(status))));
    stream.close();
    input.join();
}

void ShellService::copyInput(AdbStream &stream, ShellProcess &process) const
{
    if (!m_framed) {
        while (const std::optional<QByteArray> bytes = stream.read())
            writeAll(process.input(), *bytes);
        return;
    }
    while (const std::optional<QByteArray> header = stream.readExactly(5)) {
        const quint32 size = qFromLittleEndian<quint32>(header->constData() + 1);
        const std::optional<QByteArray> data = stream.readExactly(static_cast<qsizetype>(size));
        if (!data)
            return;
        if (header->at(0) == Stdin) {
            writeAll(process.input(), *data); // a command that reads no more is no reason to stop listening
        } else if (header->at(0) == CloseStdin) {
            process.closeInput();
        } else if (header->at(0) == WindowSize) {
            int rows = 0;
            int columns = 0;
            if (std::sscanf(data->constData(), "%dx%d", &rows, &columns) == 2)
                process.resizeTerminal(rows, columns);
        }
    }
}

void ShellService::copyOutput(AdbStream &stream, ShellProcess &process) const
{
    struct Source {
        int fd;
        Packet id;
    };
    std::vector<Source> sources = {{process.output(), Stdout}};
    if (process.error() >= 0)
        sources.push_back({process.error(), Stderr});
    QByteArray buffer(64 * 1024, Qt::Uninitialized);
    while (!sources.empty()) {
        std::vector<pollfd> polled;
        for (const Source &source : sources)
            polled.push_back({source.fd, POLLIN, 0});
        if (::poll(polled.data(), polled.size(), -1) < 0)
            continue;
        for (size_t i = polled.size(); i-- > 0;) {
            if (polled[i].revents == 0)
                continue;
            const ssize_t got = ::read(polled[i].fd, buffer.data(), static_cast<size_t>(buffer.size()));
            if (got <= 0) { // a terminal whose last user left gives an error in place of an end
                sources.erase(sources.begin() + static_cast<std::ptrdiff_t>(i));
                continue;
            }
            const QByteArray bytes = buffer.left(got);
            const bool wanted = m_framed || sources[i].id == Stdout;
            if (wanted && !stream.write(m_framed ? packet(sources[i].id, bytes) : bytes))
                process.kill(); // the pipes end with the processes, and so does this loop
        }
    }
}

QByteArray ShellService::packet(Packet id, const QByteArray &data)
{
    QByteArray bytes(5, Qt::Uninitialized);
    bytes[0] = id;
    qToLittleEndian(static_cast<quint32>(data.size()), bytes.data() + 1);
    return bytes + data;
}

} // namespace standin
