// standinctl: one request to a running stand-in device, from the command line.

#include "common/Sockets.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

const auto usage = u"usage: standinctl [--socket PATH] COMMAND\n"
                   "  state                        print everything that is known of the device, as JSON\n"
                   "  clipboard TEXT               change the device's clipboard as one of its apps would\n"
                   "  set bootSeconds SECONDS      how long a boot takes\n"
                   "  fault NAME [ARGUMENT]        show a fault from now on\n"
                   "  fault clear [NAME]           show it, or all of them, no longer\n"
                   "  notify PACKAGE TITLE TEXT [ID [ongoing]]   post a notification as the app would\n"
                   "  unnotify PACKAGE [ID]        take one back, or all of the app's\n"
                   "  media PACKAGE TITLE ARTIST [paused]   let the app play; with no TITLE its session ends\n"
                   "  screenshot FILE [DISPLAY]    write a display's picture as PNG\n"
                   "  push-screen DISPLAY          open a second screen of the app on the display\n"
                   "  quit | die                   end the device cleanly, or not\n"
                   "The socket is QUILLNEST_STANDIN_SOCKET when none is named.\n"_s;

int fail(const QString &words)
{
    QTextStream(stderr) << "standinctl: " << words << '\n';
    return 1;
}

QJsonObject requestFor(const QStringList &words)
{
    const QString command = words.value(0);
    QJsonObject request{{u"cmd"_s, command}};
    if (command == u"clipboard") {
        request[u"text"_s] = words.value(1);
    } else if (command == u"set") {
        request[u"name"_s] = words.value(1);
        request[u"value"_s] = words.value(2);
    } else if (command == u"fault") {
        request[u"name"_s] = words.value(1);
        request[u"argument"_s] = words.value(2);
    } else if (command == u"screenshot" && words.size() > 2) {
        request[u"displayId"_s] = words[2].toInt();
    } else if (command == u"notify") {
        request[u"package"_s] = words.value(1);
        request[u"title"_s] = words.value(2);
        request[u"text"_s] = words.value(3);
        request[u"id"_s] = words.value(4, u"1"_s).toInt();
        request[u"ongoing"_s] = words.value(5) == u"ongoing";
    } else if (command == u"unnotify") {
        request[u"package"_s] = words.value(1);
        if (words.size() > 2)
            request[u"id"_s] = words[2].toInt();
    } else if (command == u"media") {
        request[u"package"_s] = words.value(1);
        request[u"title"_s] = words.value(2);
        request[u"artist"_s] = words.value(3);
        request[u"playing"_s] = words.value(4) != u"paused";
    } else if (command == u"push-screen") {
        request[u"displayId"_s] = words.value(1).toInt();
    }
    return request;
}

std::optional<QByteArray> exchange(const QString &socket, const QJsonObject &request)
{
    const standin::UniqueFd fd = standin::connectToUnixPath(QFile::encodeName(socket));
    if (!fd.isValid() || !standin::writeAll(fd.get(), QJsonDocument(request).toJson(QJsonDocument::Compact) + '\n'))
        return std::nullopt;
    QByteArray answer;
    char buffer[65536];
    while (!answer.endsWith('\n')) {
        const ssize_t got = ::read(fd.get(), buffer, sizeof buffer);
        if (got <= 0)
            break;
        answer.append(buffer, got);
    }
    return answer;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QStringList words = QCoreApplication::arguments().mid(1);
    QString socket = qEnvironmentVariable("QUILLNEST_STANDIN_SOCKET");
    if (words.value(0) == u"--socket") {
        socket = words.value(1);
        words = words.mid(2);
    }
    if (words.isEmpty() || socket.isEmpty() || (words[0] == u"screenshot" && words.size() < 2)) {
        QTextStream(stderr) << usage;
        return 2;
    }
    const std::optional<QByteArray> bytes = exchange(socket, requestFor(words));
    if (!bytes)
        return fail(u"no device answers at %1"_s.arg(socket));
    if (words[0] == u"die") // takes its answer with it
        return 0;
    const QJsonObject answer = QJsonDocument::fromJson(*bytes).object();
    if (!answer[u"ok"].toBool())
        return fail(answer[u"error"].toString(u"no answer"_s));
    if (words[0] == u"state") {
        QTextStream(stdout) << QJsonDocument(answer[u"state"].toObject()).toJson();
    } else if (words[0] == u"screenshot") {
        QFile file(words[1]);
        if (!file.open(QFile::WriteOnly)
            || file.write(QByteArray::fromBase64(answer[u"png"].toString().toLatin1())) <= 0)
            return fail(u"cannot write %1"_s.arg(words[1]));
    }
    return 0;
}
