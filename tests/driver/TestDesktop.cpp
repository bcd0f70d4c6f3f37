#include "driver/TestDesktop.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTcpServer>
#include <QThread>

#include <sys/prctl.h>

#include <cmath>
#include <csignal>
#include <cstring>

namespace quillnest::driver
{

namespace
{

QString freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return QString::number(server.serverPort());
}

QString programPath(const QString &name)
{
    const auto path = name.startsWith(QLatin1Char('/')) ? name : QStandardPaths::findExecutable(name);
    if (path.isEmpty())
        throw DriverError(QStringLiteral("%1 is not installed").arg(name));
    return path;
}

} // namespace

void waitFor(const QString &what, double seconds, const std::function<bool()> &condition)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (static_cast<double>(timer.elapsed()) > seconds * 1000)
            throw DriverError(QStringLiteral("waited %1 s in vain for: %2").arg(seconds).arg(what));
        QThread::msleep(20);
    }
}

TestDesktop::TestDesktop(Options options) : m_options(options), m_root(QDir::tempPath() + QStringLiteral("/qn-XXXXXX"))
{
    const auto system = QProcessEnvironment::systemEnvironment();
    // Only what programs can't do without is taken over from whoever runs this.
    for (const auto &name :
         {"PATH", "USER", "LOGNAME", "ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS"}) {
        const auto key = QLatin1String(name);
        if (system.contains(key))
            m_environment.insert(key, system.value(key));
    }
    const auto set
        = [this](const char *name, const QString &value) { m_environment.insert(QLatin1String(name), value); };
    const auto folder = [this](const QString &name) {
        const auto path = m_root.filePath(name);
        QDir().mkpath(path);
        return path;
    };
    set("LANG", QStringLiteral("C.UTF-8"));
    set("HOME", folder(QStringLiteral("home")));
    set("TMPDIR", folder(QStringLiteral("tmp")));
    set("XDG_CONFIG_HOME", folder(QStringLiteral("home/.config")));
    set("XDG_DATA_HOME", folder(QStringLiteral("home/.local/share")));
    set("XDG_STATE_HOME", folder(QStringLiteral("home/.local/state")));
    set("XDG_CACHE_HOME", folder(QStringLiteral("home/.cache")));
    set("XDG_RUNTIME_DIR", folder(QStringLiteral("run")));
    QFile::setPermissions(
        m_root.filePath(QStringLiteral("run")), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    set("ANDROID_ADB_SERVER_PORT", freePort());
    set("QT_QPA_PLATFORM", QStringLiteral("xcb"));
    set("QT_SCALE_FACTOR", QString::number(m_options.scale));

    // The X server picks a free number by itself and tells it on its standard output.
    auto xServer = start(
        QStringLiteral("Xvfb"),
        // Otherwise it begins anew, and throws out whoever is just coming, when its last client goes.
        {QStringLiteral("-noreset"), QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-nolisten"),
         QStringLiteral("tcp"), QStringLiteral("-screen"), QStringLiteral("0"),
         QStringLiteral("%1x%2x24").arg(m_options.screen.width()).arg(m_options.screen.height())});
    if (!xServer->waitForReadyRead(20000))
        throw DriverError(QStringLiteral("the X server does not start"));
    m_xServer = xServer->processId();
    set("DISPLAY", QLatin1Char(':') + QString::fromLatin1(xServer->readAllStandardOutput().trimmed()));
    m_services.push_back(std::move(xServer));

    startBus();
    startService(QStringLiteral("openbox"), {});
    if (m_options.sound) {
        set("PULSE_SERVER", QStringLiteral("unix:") + soundSocket());
        startSoundServer();
    }
    waitFor(QStringLiteral("the window manager"), 20, [this] {
        auto probe
            = start(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTING_WM_CHECK")});
        probe->waitForFinished();
        return probe->readAllStandardOutput().contains("window id");
    });
}

QString TestDesktop::soundSocket() const
{
    return m_root.filePath(QStringLiteral("run/sound"));
}

void TestDesktop::startSoundServer()
{
    QFile::remove(soundSocket());
    m_soundServer = start(
        QStringLiteral("pulseaudio"),
        {QStringLiteral("-n"), QStringLiteral("--daemonize=no"), QStringLiteral("--exit-idle-time=-1"),
         QStringLiteral("-L"), QStringLiteral("module-null-sink sink_name=loudspeaker"), QStringLiteral("-L"),
         QStringLiteral("module-suspend-on-idle timeout=0"), QStringLiteral("-L"),
         QStringLiteral("module-native-protocol-unix auth-anonymous=1 socket=%1").arg(soundSocket())},
        Output::dropped);
    waitFor(QStringLiteral("the sound server"), 20, [this] {
        const auto probe = start(QStringLiteral("pactl"), {QStringLiteral("info")});
        return probe->waitForFinished(5000) && probe->exitCode() == 0;
    });
}

void TestDesktop::stopSoundServer()
{
    if (!m_soundServer)
        return;
    thawSoundServer();
    m_soundServer->terminate();
    if (!m_soundServer->waitForFinished(3000)) {
        m_soundServer->kill();
        m_soundServer->waitForFinished(3000);
    }
    m_soundServer.reset();
}

void TestDesktop::freezeSoundServer() const
{
    ::kill(static_cast<pid_t>(m_soundServer->processId()), SIGSTOP);
}

void TestDesktop::thawSoundServer() const
{
    ::kill(static_cast<pid_t>(m_soundServer->processId()), SIGCONT);
}

void TestDesktop::startBus()
{
    // The usual configuration would start whatever service this machine happens to have.
    const auto services = m_root.filePath(QStringLiteral("services"));
    QDir().mkpath(services);
    if (m_options.portal) {
        for (const auto &name :
             {"org.freedesktop.portal.Desktop", "org.freedesktop.impl.portal.desktop.gtk", "ca.desrt.dconf"}) {
            const auto file = QStringLiteral("/usr/share/dbus-1/services/%1.service").arg(QLatin1String(name));
            if (!QFile::copy(file, services + QLatin1Char('/') + QFileInfo(file).fileName()))
                throw DriverError(QStringLiteral("%1 is not installed").arg(file));
        }
    }
    QFile configuration(m_root.filePath(QStringLiteral("bus.conf")));
    if (!configuration.open(QIODevice::WriteOnly))
        throw DriverError(QStringLiteral("the session bus can't be configured"));
    configuration.write(QStringLiteral(R"(<busconfig>
  <type>session</type>
  <listen>unix:dir=%1</listen>
  <auth>EXTERNAL</auth>
  <servicedir>%2</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)")
                            .arg(m_environment.value(QStringLiteral("XDG_RUNTIME_DIR")), services)
                            .toUtf8());
    configuration.close();
    auto bus = start(
        QStringLiteral("dbus-daemon"),
        {QStringLiteral("--config-file=") + configuration.fileName(), QStringLiteral("--nofork"),
         QStringLiteral("--print-address")});
    if (!bus->waitForReadyRead(20000))
        throw DriverError(QStringLiteral("the session bus does not start"));
    m_environment.insert(
        QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QString::fromLatin1(bus->readAllStandardOutput().trimmed()));
    m_services.push_back(std::move(bus));
}

TestDesktop::~TestDesktop()
{
    auto adb = start(QStringLiteral("adb"), {QStringLiteral("kill-server")});
    adb->waitForFinished(5000);
    releaseClipboard();
    stopSoundServer();
    while (!m_services.empty()) {
        auto &service = m_services.back();
        service->terminate();
        if (!service->waitForFinished(3000)) {
            service->kill();
            service->waitForFinished(3000);
        }
        m_services.pop_back();
    }
    endAll();
}

namespace
{

/// Kills the processes with `mark` in their environment and with this name, if one is given.
void killMarked(const QByteArray &mark, const QByteArray &name)
{
    for (const auto &entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        bool isProcess = false;
        const int id = entry.toInt(&isProcess);
        QFile environment(QStringLiteral("/proc/%1/environ").arg(entry));
        QFile command(QStringLiteral("/proc/%1/comm").arg(entry));
        if (!isProcess || !environment.open(QIODevice::ReadOnly) || !command.open(QIODevice::ReadOnly))
            continue;
        if (environment.readAll().contains(mark) && (name.isEmpty() || command.readAll().trimmed() == name))
            ::kill(id, SIGKILL);
    }
}

} // namespace

void TestDesktop::endAll(const QByteArray &name) const
{
    // Whoever was started on this desktop, by however many others, carries its folder in the environment.
    killMarked(QFile::encodeName(m_root.path()), name);
}

void TestDesktop::endDevicesLeftBehind()
{
    killMarked(QFile::encodeName(QDir::tempPath() + QStringLiteral("/qn-")), QByteArrayLiteral("emulator"));
}

std::unique_ptr<QProcess> TestDesktop::start(const QString &program, const QStringList &arguments, Output output) const
{
    auto process = std::make_unique<QProcess>();
    if (output == Output::dropped) {
        process->setStandardOutputFile(QProcess::nullDevice());
        process->setStandardErrorFile(QProcess::nullDevice());
    }
    process->setProcessEnvironment(m_environment);
    process->setWorkingDirectory(home());
    // What this starts must not outlive a test that crashes.
    process->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process->start(programPath(program), arguments);
    if (!process->waitForStarted(10000))
        throw DriverError(QStringLiteral("%1 does not start").arg(program));
    return process;
}

qint64 TestDesktop::startService(const QString &program, const QStringList &arguments)
{
    auto process = start(program, arguments, Output::dropped);
    m_services.push_back(std::move(process));
    return m_services.back()->processId();
}

QByteArray TestDesktop::run(const QString &program, const QStringList &arguments) const
{
    const auto process = start(program, arguments);
    process->waitForFinished(60000);
    if (process->exitStatus() != QProcess::NormalExit || process->exitCode() != 0)
        throw DriverError(
            QStringLiteral("%1 %2: %3")
                .arg(program, arguments.join(QLatin1Char(' ')), QString::fromUtf8(process->readAllStandardError())));
    return process->readAllStandardOutput();
}

namespace
{
QStringList pixelText(QPointF point, double scale)
{
    return {QString::number(qRound(point.x() * scale)), QString::number(qRound(point.y() * scale))};
}
} // namespace

void TestDesktop::moveMouse(QPointF point) const
{
    run(QStringLiteral("xdotool"), QStringList{QStringLiteral("mousemove")} + pixelText(point, m_options.scale));
}

void TestDesktop::click(QPointF point, int button) const
{
    run(QStringLiteral("xdotool"),
        QStringList{QStringLiteral("mousemove")} + pixelText(point, m_options.scale)
            + QStringList{QStringLiteral("click"), QString::number(button)});
}

void TestDesktop::drag(QPointF from, QPointF to) const
{
    const auto xdotool = QStringLiteral("xdotool");
    run(xdotool,
        QStringList{QStringLiteral("mousemove")} + pixelText(from, m_options.scale)
            + QStringList{QStringLiteral("mousedown"), QStringLiteral("1")});
    // A hand begins slowly.
    const QPointF first(std::copysign(2, to.x() - from.x()), std::copysign(1, to.y() - from.y()));
    run(xdotool, QStringList{QStringLiteral("mousemove")} + pixelText(from + first, m_options.scale));
    QThread::msleep(50);
    constexpr int steps = 10;
    for (int i = 1; i <= steps; ++i) {
        run(xdotool,
            QStringList{QStringLiteral("mousemove")} + pixelText(from + (to - from) * i / steps, m_options.scale));
        QThread::msleep(15);
    }
    run(xdotool, {QStringLiteral("mouseup"), QStringLiteral("1")});
}

void TestDesktop::type(const QString &text) const
{
    run(QStringLiteral("xdotool"), {QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"), text});
}

void TestDesktop::key(const QString &name) const
{
    run(QStringLiteral("xdotool"), {QStringLiteral("key"), name});
}

void TestDesktop::setClipboard(const QString &text)
{
    // xclip stays and answers for the clipboard until somebody else takes it.
    releaseClipboard();
    m_clipboardOwner = start(
        QStringLiteral("xclip"), {QStringLiteral("-quiet"), QStringLiteral("-selection"), QStringLiteral("clipboard")});
    m_clipboardOwner->write(text.toUtf8());
    while (m_clipboardOwner->bytesToWrite() > 0 && m_clipboardOwner->waitForBytesWritten(10000)) { }
    m_clipboardOwner->closeWriteChannel();
    waitFor(QStringLiteral("the clipboard to be taken"), 10, [this, text] { return clipboard() == text; });
}

void TestDesktop::releaseClipboard()
{
    if (!m_clipboardOwner)
        return;
    m_clipboardOwner->kill();
    m_clipboardOwner->waitForFinished(5000);
    m_clipboardOwner.reset();
}

QString TestDesktop::clipboard() const
{
    const auto reader = start(
        QStringLiteral("xclip"), {QStringLiteral("-o"), QStringLiteral("-selection"), QStringLiteral("clipboard")});
    reader->waitForFinished(10000);
    return QString::fromUtf8(reader->readAllStandardOutput());
}

std::vector<std::int16_t> TestDesktop::recordSound(double seconds) const
{
    const auto count = static_cast<qsizetype>(seconds * 48000);
    const auto recorder = start(
        QStringLiteral("parec"),
        {QStringLiteral("--device=loudspeaker.monitor"), QStringLiteral("--format=s16le"),
         QStringLiteral("--rate=48000"), QStringLiteral("--channels=1"), QStringLiteral("--raw")});
    QByteArray bytes;
    waitFor(QStringLiteral("%1 s of sound").arg(seconds), seconds + 20, [&recorder, &bytes, count] {
        recorder->waitForReadyRead(100);
        bytes += recorder->readAllStandardOutput();
        return bytes.size() >= 2 * count;
    });
    recorder->kill();
    recorder->waitForFinished(5000);
    std::vector<std::int16_t> samples(static_cast<std::size_t>(count));
    std::memcpy(samples.data(), bytes.constData(), static_cast<std::size_t>(2 * count));
    return samples;
}

QImage TestDesktop::screenshot(QRect area) const
{
    const auto file = m_root.filePath(QStringLiteral("tmp/screenshot.png"));
    const auto pixels = [this](int points) { return qRound(points * m_options.scale); };
    run(QStringLiteral("import"),
        {QStringLiteral("-window"), QStringLiteral("root"), QStringLiteral("-crop"),
         QStringLiteral("%1x%2+%3+%4")
             .arg(pixels(area.width()))
             .arg(pixels(area.height()))
             .arg(pixels(area.x()))
             .arg(pixels(area.y())),
         QStringLiteral("+repage"), file});
    return QImage(file);
}

int TestDesktop::shownWindows() const
{
    return static_cast<int>(
        run(QStringLiteral("xdotool"),
            {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"), QStringLiteral(".*")})
            .count('\n'));
}

} // namespace quillnest::driver
