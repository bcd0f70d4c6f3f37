// The stand-in's emulator program. Takes the command line and the environment of the real one.

#include "emulator/Emulator.h"

#include <QGuiApplication>
#include <csignal>
#include <cstdio>

int main(int argc, char **argv)
{
    std::signal(SIGPIPE, SIG_IGN); // a peer that has gone shows in the result of the write
    qputenv("QT_QPA_PLATFORM", "offscreen"); // it draws, but never on the user's screen
    QString problem;
    standin::EmulatorOptions options;
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    if (!options.read(arguments, &problem)) {
        std::fprintf(stderr, "emulator: ERROR: %s\n", qPrintable(problem));
        return 1;
    }
    const QGuiApplication application(argc, argv);
    standin::Emulator emulator(options);
    if (!emulator.start(&problem)) {
        std::fprintf(stderr, "emulator: ERROR: %s\n", qPrintable(problem));
        std::fflush(stderr);
        ::_exit(1); // threads may be up already, and nothing is to be saved
    }
    return QGuiApplication::exec();
}
