#pragma once

#include "daemon/AdbStream.h"

namespace standin
{

/// Runs "shell:", "shell,v2,...:" and "exec:" services to their end. When the stream goes away, so does everything
/// that the command started.
class ShellService
{
public:
    /// Splits the service name; a name that is not a shell's gives nothing.
    static std::optional<ShellService> parse(const QByteArray &name);

    void serve(const QByteArray &root, AdbStream &stream) const;
    const QByteArray &command() const { return m_command; }

private:
    /// The packets of the shell protocol inside a v2 stream: one byte of id, a little-endian length, the data.
    enum Packet : char { Stdin = 0, Stdout = 1, Stderr = 2, Exit = 3, CloseStdin = 4, WindowSize = 5 };

    void copyInput(AdbStream &stream, class ShellProcess &process) const;
    void copyOutput(AdbStream &stream, class ShellProcess &process) const;
    static QByteArray packet(Packet id, const QByteArray &data);

    bool m_framed = false;
    bool m_terminal = false;
    bool m_merged = false;
    QByteArray m_terminalType;
    QByteArray m_command;
};

} // namespace standin
