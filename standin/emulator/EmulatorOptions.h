#pragma once

#include <QString>
#include <QStringList>

namespace standin
{

/// What the command line, the environment and the AVD's files say.
struct EmulatorOptions {
    QString avdName;
    QString avdFolder;
    QString systemImage;
    QString abi;
    int api = 0;
    quint16 consolePort = 5554;

    /// False with `problem` filled in for an unknown argument, a missing AVD or a missing system image.
    bool read(const QStringList &arguments, QString *problem);

private:
    bool readArguments(const QStringList &arguments, QString *problem);
    bool readAvd(QString *problem);
};

} // namespace standin
