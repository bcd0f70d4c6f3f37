// standin-packages: serves package lists and archives of the stand-in's own SDK. Prints the address of the lists, then
// goes on until it is ended.

#include "packages/PackageServer.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

/// "NAME[=ARGUMENT][@WHERE]"
standin::PackageFault readFault(const QString &text)
{
    const QString what = text.section(u'@', 0, 0);
    return {what.section(u'=', 0, 0), what.section(u'=', 1), text.section(u'@', 1)};
}

int fail(const QString &words)
{
    std::fprintf(stderr, "standin-packages: %s\n", qPrintable(words));
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    std::signal(SIGPIPE, SIG_IGN); // a peer that has gone shows in the result of the write
    const QCoreApplication application(argc, argv);
    QCommandLineParser line;
    const QCommandLineOption port(u"port"_s, u"port on the loopback address; any by default"_s, u"N"_s, u"0"_s);
    const QCommandLineOption api(u"api"_s, u"API level of an image; 30 to 36 by default"_s, u"N"_s);
    const QCommandLineOption image(u"image-bytes"_s, u"size of an image"_s, u"N"_s, QString::number(4 << 20));
    const QCommandLineOption fault(u"fault"_s, u"NAME[=ARGUMENT][@PART-OF-ADDRESS]"_s, u"FAULT"_s);
    line.addOptions({port, api, image, fault});
    line.addHelpOption();
    line.process(application);

    QList<int> apis;
    QStringList arguments;
    for (const QString &text : line.values(api))
        apis.append(text.toInt());
    if (apis.isEmpty())
        apis = {30, 31, 32, 33, 34, 35, 36};
    for (const int level : apis)
        arguments += {u"--api"_s, QString::number(level)};
    QTemporaryDir folder;
    const QString sdk = folder.filePath(u"sdk"_s);
    if (QProcess::execute(QCoreApplication::applicationDirPath() + u"/standin-sdk"_s, arguments + QStringList{sdk})
        != 0)
        return fail(u"the SDK can't be laid out"_s);
    try {
        standin::PackageServer server(standin::packSdk(sdk, apis, line.value(image).toLongLong()));
        // All is in memory, and whoever ends this doesn't ask it to tidy up.
        folder.remove();
        for (const QString &text : line.values(fault)) {
            if (!server.addFault(readFault(text)))
                return fail(u"no fault is called %1"_s.arg(text));
        }
        if (!server.start(static_cast<quint16>(line.value(port).toUInt())))
            return fail(u"port %1 is not free"_s.arg(line.value(port)));
        std::printf("%s\n", qPrintable(server.repository().toString()));
        std::fflush(stdout);
        QCoreApplication::exec();
    } catch (const std::exception &error) {
        return fail(QString::fromUtf8(error.what()));
    }
}
