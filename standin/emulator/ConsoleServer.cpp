#include "emulator/ConsoleServer.h"

#include "common/Sockets.h"

#include <QFile>
#include <QRandomGenerator>

namespace standin
{

using namespace Qt::StringLiterals;

ConsoleServer::ConsoleServer(Device &device, std::function<void()> kill)
    : m_device(device), m_kill(std::move(kill)), m_tokenFile(qgetenv("HOME") + "/.emulator_console_auth_token")
{
    // An empty file means that no token is wanted; only a missing one is made.
    QFile file(QFile::decodeName(m_tokenFile));
    if (file.open(QFile::ReadOnly)) {
        m_token = file.readAll().trimmed();
    } else if (file.open(QFile::WriteOnly)) {
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        m_token = QByteArray::number(QRandomGenerator::system()->generate64(), 36);
        file.write(m_token);
    }
}

bool ConsoleServer::start(quint16 port)
{
    m_listener = listenOnLoopback(port);
    if (!m_listener.isValid())
        return false;
    serveEachConnection(m_listener.get(), [this](const UniqueFd &connection) { serve(connection); });
    return true;
}

void ConsoleServer::serve(const UniqueFd &connection)
{
    bool authenticated = m_token.isEmpty();
    QByteArray banner;
    if (!authenticated) {
        banner = "Android Console: Authentication required\n"
                 "Android Console: type 'auth <auth_token>' to authenticate\n"
                 "Android Console: you can find your <auth_token> in \n'"
            + m_tokenFile + "'\n";
    } else {
        banner = "Android Console: type 'help' for a list of commands\n";
    }
    writeAll(connection.get(), QByteArray(banner + "OK\n").replace('\n', "\r\n"));
    QByteArray line;
    char letter = 0;
    while (line.size() < 4096 && readExactly(connection.get(), &letter, 1)) {
        if (letter != '\n') {
            line += letter;
            continue;
        }
        const QByteArray text = line.trimmed();
        line.clear();
        if (text.isEmpty())
            continue;
        const QByteArray words = answer(text, authenticated);
        if (words.isEmpty())
            return;
        writeAll(connection.get(), QByteArray(words + '\n').replace('\n', "\r\n"));
        if (text == "kill" && authenticated && !m_device.faults.has(u"ignore-kill"_s))
            m_kill();
    }
}

QByteArray ConsoleServer::answer(const QByteArray &line, bool &authenticated)
{
    if (line == "quit" || line == "exit")
        return {};
    if (line.startsWith("auth ")) {
        authenticated = authenticated || line.mid(5).trimmed() == m_token;
        return authenticated ? "Android Console: type 'help' for a list of commands\nOK"
                             : "KO: authentication token does not match " + m_tokenFile;
    }
    if (line == "help")
        return "Android console commands:\n    help\n    auth\n    avd name\n    kill\n    ping\n    quit\nOK";
    if (line == "ping")
        return "I am alive!\nOK";
    if (line == "avd name" && authenticated)
        return m_device.identity.avdName.toUtf8() + "\nOK";
    if (line == "kill" && authenticated)
        return "OK: killing emulator, bye bye";
    return "KO: unknown command, try 'help'";
}

} // namespace standin
