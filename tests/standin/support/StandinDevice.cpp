#include "support/StandinDevice.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QThread>

namespace test
{

using namespace Qt::StringLiterals;

namespace
{

bool isFree(int port)
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHost, static_cast<quint16>(port));
}

/// Below the range from which the system gives ports away, and off the ports of real emulators.
int freeEvenPort()
{
    for (;;) {
        const int port = 12000 + 2 * static_cast<int>(QRandomGenerator::system()->bounded(9000));
        if (isFree(port) && isFree(port + 1))
            return port;
    }
}

void write(const QString &path, const QString &text)
{
    QFile file(path);
    if (file.open(QFile::WriteOnly))
        file.write(text.toUtf8());
}

} // namespace

bool eventually(const std::function<bool()> &condition, int seconds)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > seconds * 1000)
            return false;
        QThread::msleep(10);
    }
    return true;
}

StandinDevice::StandinDevice()
    : environment(QProcessEnvironment::systemEnvironment())
    , m_sdk(m_folder.path() + u"/sdk"_s)
    , m_port(freeEvenPort())
    , m_serverPort(freeEvenPort())
{
    QDir().mkpath(m_folder.path() + u"/home"_s);
    environment.insert(u"HOME"_s, m_folder.path() + u"/home"_s);
    environment.insert(u"TMPDIR"_s, m_folder.path());
    environment.insert(u"XDG_RUNTIME_DIR"_s, m_folder.path());
    environment.insert(u"ANDROID_SDK_ROOT"_s, m_sdk);
    environment.insert(u"ANDROID_HOME"_s, m_sdk);
    environment.insert(u"ANDROID_AVD_HOME"_s, m_folder.path() + u"/avd"_s);
    environment.insert(u"ANDROID_ADB_SERVER_PORT"_s, QString::number(m_serverPort));
    environment.insert(u"ADB_LOCAL_TRANSPORT_MAX_PORT"_s, u"5554"_s); // keeps the server off emulators of others
    environment.insert(u"QUILLNEST_STANDIN_BOOT_SECONDS"_s, u"0.05"_s);
    environment.remove(u"QUILLNEST_STANDIN_FAULTS"_s);
    environment.remove(u"QUILLNEST_STANDIN_SOCKET"_s);
    environment.remove(u"ANDROID_SERIAL"_s);
    run(QStringLiteral(STANDIN_SDK), {m_sdk});
    writeAvd(u"Test"_s, 35);
}

StandinDevice::~StandinDevice()
{
    if (m_emulator && m_emulator->state() != QProcess::NotRunning) {
        m_emulator->kill();
        m_emulator->waitForFinished(5000);
    }
    adb({u"kill-server"_s});
}

void StandinDevice::start()
{
    m_emulator = std::make_unique<QProcess>();
    m_emulator->setProcessEnvironment(environment);
    m_emulator->setProcessChannelMode(QProcess::ForwardedChannels);
    m_emulator->start(
        m_sdk + u"/emulator/emulator"_s,
        {u"@Test"_s, u"-port"_s, QString::number(m_port), u"-no-window"_s, u"-no-boot-anim"_s, u"-gpu"_s, u"host"_s,
         u"-memory"_s, u"2048"_s, u"-no-snapshot"_s});
    m_emulator->waitForStarted();
}

bool StandinDevice::boot()
{
    adb({u"start-server"_s});
    start();
    return eventually([this] { return shell(u"getprop sys.boot_completed"_s).out.trimmed() == "1"; }, 25);
}

bool StandinDevice::waitForExit(int seconds)
{
    return m_emulator->state() == QProcess::NotRunning || m_emulator->waitForFinished(seconds * 1000);
}

Outcome StandinDevice::runEmulator(const QString &avd, int port) const
{
    return run(m_sdk + u"/emulator/emulator"_s, {u'@' + avd, u"-port"_s, QString::number(port), u"-no-window"_s});
}

Outcome StandinDevice::adb(const QStringList &arguments, const QByteArray &input) const
{
    return run(adbProgram(), QStringList{u"-s"_s, serial()} + arguments, input);
}

Outcome StandinDevice::control(const QStringList &words) const
{
    return run(QStringLiteral(STANDINCTL), QStringList{u"--socket"_s, avdFolder() + u"/standin.sock"_s} + words);
}

QJsonObject StandinDevice::state() const
{
    return QJsonDocument::fromJson(control({u"state"_s}).out).object();
}

void StandinDevice::writeAvd(const QString &name, int api) const
{
    const QString home = m_folder.path() + u"/avd/"_s;
    QDir().mkpath(home + name + u".avd"_s);
    write(home + name + u".ini"_s, u"avd.ini.encoding=UTF-8\npath=%1%2.avd\n"_s.arg(home, name));
    write(
        home + name + u".avd/config.ini"_s,
        u"abi.type=x86_64\nimage.sysdir.1=system-images/android-%1/default/x86_64/\n"_s.arg(api));
}

Outcome StandinDevice::run(const QString &program, const QStringList &arguments, const QByteArray &input) const
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForStarted())
        return {};
    if (!input.isEmpty())
        process.write(input);
    process.closeWriteChannel();
    Outcome outcome;
    if (!process.waitForFinished(30000)) {
        process.kill();
        process.waitForFinished();
        return outcome;
    }
    outcome.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    outcome.out = process.readAllStandardOutput();
    outcome.error = process.readAllStandardError();
    return outcome;
}

QString sampleApk(const char *name)
{
    return QStringLiteral(SAMPLE_FOLDER "/") + QLatin1StringView(name) + u".apk"_s;
}

} // namespace test
