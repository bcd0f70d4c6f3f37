#pragma once

#include "common/UniqueFd.h"

#include <QByteArray>
#include <QStringList>
#include <mutex>
#include <optional>

namespace standin
{

/// One device command's connection to the tool that runs it in the shell. Output may come from any thread.
class CommandIo
{
public:
    explicit CommandIo(UniqueFd socket);

    /// Reads name, arguments and surroundings; false when the tool sent nonsense.
    bool readRequest();
    const QString &name() const { return m_name; }
    const QStringList &arguments() const { return m_arguments; }
    const QString &folder() const { return m_folder; }
    const QString &classPath() const { return m_classPath; }
    /// A path as the command was given it, made absolute.
    QString absolute(const QString &path) const;

    void out(const QString &text) { send('o', text.toUtf8()); }
    void outBytes(const QByteArray &bytes) { send('o', bytes); }
    void error(const QString &text) { send('e', text.toUtf8()); }
    /// The next piece of standard input; empty at its end.
    QByteArray readInput();
    void finish(int status) { send('x', QByteArray(1, static_cast<char>(status))); }

    /// Waits until the tool is gone or `end` was called.
    void waitForTool();
    void end();

private:
    void send(char kind, const QByteArray &data);

    const UniqueFd m_socket;
    std::mutex m_sendMutex;
    QString m_name;
    QStringList m_arguments;
    QString m_folder;
    QString m_classPath;
};

} // namespace standin
