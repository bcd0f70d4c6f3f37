#include "ctl/Ctl.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <stdexcept>

namespace quillnest
{

Ctl::Ctl()
{
    environment.insert(QStringLiteral("PATH"), qEnvironmentVariable("PATH"));
    environment.insert(QStringLiteral("LANG"), QStringLiteral("C.UTF-8"));
    environment.insert(QStringLiteral("HOME"), path(QStringLiteral("home")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), path(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), path(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_STATE_HOME"), path(QStringLiteral("state")));
    environment.insert(
        QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("unix:path=") + path(QStringLiteral("no-bus")));
    for (const auto &name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS"}) {
        if (qEnvironmentVariableIsSet(name))
            environment.insert(QLatin1String(name), qEnvironmentVariable(name));
    }
}

CtlResult Ctl::run(const QStringList &arguments) const
{
    return runProgram(QStringLiteral(QUILLNESTCTL), arguments);
}

CtlResult Ctl::runProgram(const QString &program, const QStringList &arguments) const
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    // Events are handled meanwhile: some tests are what the program talks to.
    if (!comesTrue([&process] { return process.state() == QProcess::NotRunning; }))
        throw std::runtime_error("the program does not end");
    return {
        process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAllStandardOutput(),
        process.readAllStandardError()};
}

std::unique_ptr<QProcess> Ctl::start(const QStringList &arguments) const
{
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment);
    process->start(QStringLiteral(QUILLNESTCTL), arguments);
    if (!process->waitForStarted())
        throw std::runtime_error("the program does not start");
    return process;
}

bool Ctl::comesTrue(const std::function<bool()> &condition)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > 20'000)
            return false;
        QCoreApplication::processEvents();
        QThread::msleep(2);
    }
    return true;
}

QByteArray Ctl::content(const QString &file) const
{
    QFile reader(file);
    return reader.open(QIODevice::ReadOnly) ? reader.readAll() : QByteArray();
}

void Ctl::write(const QString &file, const QByteArray &text, QIODevice::OpenMode mode) const
{
    QDir().mkpath(QFileInfo(file).path());
    QFile writer(file);
    if (!writer.open(mode) || writer.write(text) != text.size())
        throw std::runtime_error("can't write " + file.toStdString());
}

} // namespace quillnest
