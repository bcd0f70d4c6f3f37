#include "emulator/Emulator.h"

#include "common/JsonFile.h"
#include "common/Programs.h"

#include <QDir>
#include <QFile>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>

namespace standin
{

using namespace Qt::StringLiterals;

Emulator::Emulator(const EmulatorOptions &options)
    : m_options(options)
    , m_device(
          {options.avdName, options.avdFolder + u"/standin-data"_s, u"emulator-%1"_s.arg(options.consolePort),
           options.abi, options.api})
    , m_daemon(m_device)
    , m_sessions([this](const QByteArray &name) { return m_daemon.connectAbstract(name); })
    , m_tools(m_device, m_sessions, m_commands)
    , m_console(m_device, [this] { quit(); })
    , m_control(m_device, m_sessions, [this] { quit(); })
{
}

bool Emulator::start(QString *problem)
{
    if (!lockAvd()) {
        *problem = u"Running multiple emulators with the same AVD is not possible: %1"_s.arg(m_options.avdName);
        return false;
    }
    if (!readConfiguration(problem) || !m_device.tree.lay(deviceToolPath(), m_commands.names(), problem))
        return false;
    if (!m_console.start(m_options.consolePort) || !m_daemon.start(static_cast<quint16>(m_options.consolePort + 1))) {
        *problem = u"Port %1 or %2 is in use"_s.arg(m_options.consolePort).arg(m_options.consolePort + 1);
        return false;
    }
    if (!m_tools.start()) {
        *problem = u"Cannot listen inside the device's tree"_s;
        return false;
    }
    if (!m_control.start(controlPath())) // the device is a good device without it
        std::fprintf(stderr, "emulator: WARNING: no control socket at %s\n", qPrintable(controlPath()));
    AdbAnnouncer(adbServerPort(), m_options.consolePort).start();
    return true;
}

void Emulator::quit()
{
    QFile::remove(controlPath());
    ::_exit(0);
}

bool Emulator::lockAvd()
{
    QDir().mkpath(m_device.identity.dataFolder);
    m_lock.reset(::open(
        QFile::encodeName(m_device.identity.dataFolder + u"/lock"_s).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    return m_lock.isValid() && ::flock(m_lock.get(), LOCK_EX | LOCK_NB) == 0;
}

bool Emulator::readConfiguration(QString *problem)
{
    const QJsonObject configuration = readJsonFile(m_options.avdFolder + u"/standin.json"_s);
    if (configuration.contains(u"bootSeconds"))
        m_device.setBootSeconds(configuration[u"bootSeconds"].toDouble());
    const QJsonObject faults = configuration[u"faults"].toObject();
    for (auto fault = faults.begin(); fault != faults.end(); ++fault) {
        if (!m_device.faults.set(fault.key(), fault->toVariant().toString())) {
            *problem = u"standin.json: unknown fault '%1'"_s.arg(fault.key());
            return false;
        }
    }
    if (qEnvironmentVariableIsSet("QUILLNEST_STANDIN_BOOT_SECONDS"))
        m_device.setBootSeconds(qEnvironmentVariable("QUILLNEST_STANDIN_BOOT_SECONDS").toDouble());
    if (const auto unknown = m_device.faults.setFromText(qEnvironmentVariable("QUILLNEST_STANDIN_FAULTS"))) {
        *problem = u"QUILLNEST_STANDIN_FAULTS: unknown fault '%1'"_s.arg(*unknown);
        return false;
    }
    return true;
}

QString Emulator::controlPath() const
{
    const QString chosen = qEnvironmentVariable("QUILLNEST_STANDIN_SOCKET");
    return chosen.isEmpty() ? m_options.avdFolder + u"/standin.sock"_s : chosen;
}

} // namespace standin
