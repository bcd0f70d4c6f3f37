#include "benchmarks/BareSession.h"

#include "benchmarks/BareCommand.h"
#include "driver/TestDesktop.h"

#include <QElapsedTimer>
#include <QtEndian>

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace quillnest::bench
{

namespace
{

constexpr int acceptMilliseconds = 15'000;
const QByteArray devicePath = "/data/local/tmp/scrcpy-server.jar";

class Descriptor
{
public:
    explicit Descriptor(int value) : m_value(value)
    {
        if (value < 0)
            throw driver::DriverError(QStringLiteral("the bare client gets no socket"));
    }
    ~Descriptor() { ::close(m_value); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int get() const { return m_value; }

private:
    const int m_value;
};

/// A program that is ended with the object.
class Child
{
public:
    explicit Child(std::vector<QByteArray> arguments)
    {
        std::vector<char *> pointers;
        for (auto &argument : arguments)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        if (::posix_spawn(&m_id, pointers[0], &actions, nullptr, pointers.data(), environ) != 0)
            m_id = -1;
        posix_spawn_file_actions_destroy(&actions);
        if (m_id < 0)
            throw driver::DriverError(QStringLiteral("adb does not start"));
    }
    ~Child()
    {
        ::kill(m_id, SIGKILL);
        ::waitpid(m_id, nullptr, 0);
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

private:
    pid_t m_id = -1;
};

int accepted(const Descriptor &listener)
{
    pollfd entry{listener.get(), POLLIN, 0};
    return ::poll(&entry, 1, acceptMilliseconds) == 1 ? ::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC) : -1;
}

QByteArray readExactly(const Descriptor &socket, qsizetype count)
{
    QByteArray bytes(count, Qt::Uninitialized);
    for (qsizetype done = 0; done < count;) {
        const auto now = ::read(socket.get(), bytes.data() + done, static_cast<std::size_t>(count - done));
        if (now < 1)
            throw driver::DriverError(QStringLiteral("the bare client's video ends"));
        done += now;
    }
    return bytes;
}

void readFirstFrame(const Descriptor &video)
{
    readExactly(video, 64 + 4);
    while (true) {
        const auto header = readExactly(video, 12);
        const auto kind = static_cast<quint8>(header[0]);
        // The announcement of a size has no payload.
        if (kind & 0x80)
            continue;
        readExactly(video, qFromBigEndian<quint32>(header.constData() + 8));
        if (!(kind & 0x40))
            return;
    }
}

} // namespace

BareSession::BareSession(Plan plan) : m_plan(std::move(plan)) { }

QByteArray BareSession::adb(const std::vector<QByteArray> &arguments) const
{
    std::vector<QByteArray> whole{m_plan.adb, "-s", m_plan.serial};
    whole.insert(whole.end(), arguments.begin(), arguments.end());
    return BareCommand(std::move(whole)).run();
}

BareSession::Times BareSession::run() const
{
    static quint32 sessions = 0x1000;
    const auto id = QByteArray::number(++sessions, 16).rightJustified(8, '0');
    const auto name = "localabstract:scrcpy_" + id;
    Times times;
    QElapsedTimer timer;
    const auto lap = [&timer] {
        const double milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
        timer.start();
        return milliseconds;
    };
    timer.start();
    for (const auto &command : m_plan.commands)
        adb(command);
    times.commands = lap();

    adb({"push", m_plan.serverFile, devicePath});
    const Descriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(listener.get(), reinterpret_cast<const sockaddr *>(&address), length) != 0
        || ::listen(listener.get(), 4) != 0
        || ::getsockname(listener.get(), reinterpret_cast<sockaddr *>(&address), &length) != 0)
        throw driver::DriverError(QStringLiteral("the bare client can't listen"));
    adb({"reverse", name, "tcp:" + QByteArray::number(ntohs(address.sin_port))});
    const auto display = QByteArray::number(m_plan.display.width()) + 'x' + QByteArray::number(m_plan.display.height());
    const Child server(
        {m_plan.adb, "-s", m_plan.serial, "shell", "CLASSPATH=" + devicePath, "app_process", "/",
         "com.genymobile.scrcpy.Server", "5.0.1", "scid=" + id, "log_level=info", "audio=false",
         "video_bit_rate=8000000", "max_fps=60", "new_display=" + display + '/' + QByteArray::number(m_plan.dpi),
         "flex_display=true", "vd_system_decorations=false", "clipboard_autosync=true", "power_on=false"});
    const Descriptor video(accepted(listener));
    const Descriptor control(accepted(listener));
    adb({"reverse", "--remove", name});
    times.connection = lap();

    const auto app = '+' + m_plan.package;
    const auto start = QByteArray(1, 16) + QByteArray(1, static_cast<char>(app.size())) + app;
    if (::write(control.get(), start.constData(), static_cast<std::size_t>(start.size())) != start.size())
        throw driver::DriverError(QStringLiteral("the bare client can't start the app"));
    readFirstFrame(video);
    times.firstFrame = lap();
    return times;
}

} // namespace quillnest::bench
