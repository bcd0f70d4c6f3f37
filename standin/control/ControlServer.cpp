#include "control/ControlServer.h"

#include "common/Sockets.h"
#include "stream/ScreenRenderer.h"

#include <QBuffer>
#include <QFile>
#include <QJsonDocument>
#include <unistd.h>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

QJsonObject problem(const QString &words)
{
    return {{u"ok"_s, false}, {u"error"_s, words}};
}

const QJsonObject done = {{u"ok"_s, true}};

} // namespace

ControlServer::ControlServer(Device &device, StreamSessions &sessions, std::function<void()> quit)
    : m_device(device), m_sessions(sessions), m_quit(std::move(quit))
{
}

bool ControlServer::start(const QString &path)
{
    m_listener = listenOnUnixPath(QFile::encodeName(path));
    if (!m_listener.isValid())
        return false;
    serveEachConnection(m_listener.get(), [this](const UniqueFd &connection) { serve(connection); });
    return true;
}

void ControlServer::serve(const UniqueFd &connection)
{
    QByteArray pending;
    char buffer[4096];
    for (;;) {
        const ssize_t got = ::read(connection.get(), buffer, sizeof buffer);
        if (got <= 0)
            return;
        pending.append(buffer, got);
        for (auto end = pending.indexOf('\n'); end >= 0; end = pending.indexOf('\n')) {
            const QJsonObject request = QJsonDocument::fromJson(pending.left(end)).object();
            pending.remove(0, end + 1);
            const QByteArray line = QJsonDocument(answer(request)).toJson(QJsonDocument::Compact) + '\n';
            if (!writeAll(connection.get(), line))
                return;
            if (request[u"cmd"].toString() == u"quit")
                m_quit();
        }
    }
}

QJsonObject ControlServer::answer(const QJsonObject &request)
{
    const QString command = request[u"cmd"].toString();
    if (command == u"state") {
        QJsonObject state = m_device.stateAsJson();
        state[u"sessions"_s] = m_sessions.toJson();
        return {{u"ok"_s, true}, {u"state"_s, state}};
    }
    if (command == u"clipboard") {
        m_device.clipboard.setText(request[u"text"].toString(), 0);
        return done;
    }
    if (command == u"set")
        return set(request[u"name"].toString(), request[u"value"].toVariant().toString());
    if (command == u"fault")
        return fault(request[u"name"].toString(), request[u"argument"].toVariant().toString());
    if (command == u"screenshot")
        return screenshot(request[u"displayId"].toInt(-1));
    if (command == u"notify" || command == u"unnotify" || command == u"media")
        return mirror(command, request);
    if (command == u"push-screen") {
        m_device.displays.pushScreen(request[u"displayId"].toInt());
        return done;
    }
    if (command == u"die")
        ::_exit(9); // as if the machine had lost its power
    if (command == u"quit")
        return done;
    return problem(u"unknown command '%1'"_s.arg(command));
}

QJsonObject ControlServer::mirror(const QString &command, const QJsonObject &request)
{
    NotificationStore &store = m_device.notifications;
    const QString package = request[u"package"].toString();
    const QString title = request[u"title"].toString();
    if (package.isEmpty())
        return problem(u"a package is needed"_s);
    if (command == u"notify")
        store.post(
            {package, request[u"id"].toInt(1), title, request[u"text"].toString(), request[u"ongoing"].toBool()});
    else if (command == u"unnotify" && request.contains(u"id"))
        store.cancel(package, request[u"id"].toInt());
    else if (command == u"unnotify")
        store.cancelAll(package);
    else if (title.isEmpty())
        store.setMedia(package, std::nullopt);
    else
        store.setMedia(package, MediaSession{title, request[u"artist"].toString(), request[u"playing"].toBool(true)});
    return done;
}

QJsonObject ControlServer::set(const QString &name, const QString &value)
{
    bool ok = false;
    const double seconds = value.toDouble(&ok);
    if (name != u"bootSeconds" || !ok)
        return problem(u"cannot set '%1' to '%2'"_s.arg(name, value));
    m_device.setBootSeconds(seconds);
    return done;
}

QJsonObject ControlServer::fault(const QString &name, const QString &argument)
{
    if (name == u"clear") {
        if (argument.isEmpty())
            m_device.faults.clearAll();
        else
            m_device.faults.clear(argument);
        return done;
    }
    if (!m_device.faults.set(name, argument))
        return problem(u"unknown fault '%1'"_s.arg(name));
    return done;
}

QJsonObject ControlServer::screenshot(int displayId) const
{
    // Without a number: the newest display, which is the app's that was opened last.
    const auto display = displayId >= 0 ? m_device.displays.find(displayId) : m_device.displays.all().back();
    if (!display)
        return problem(u"no display %1"_s.arg(displayId));
    QBuffer png;
    png.open(QBuffer::WriteOnly);
    ScreenRenderer().renderWhole(display->model()).save(&png, "PNG");
    return {{u"ok"_s, true}, {u"displayId"_s, display->id()}, {u"png"_s, QString::fromLatin1(png.data().toBase64())}};
}

} // namespace standin
