#include "benchmarks/BareCommand.h"

#include "driver/TestDesktop.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillnest::bench
{

BareCommand::BareCommand(std::vector<QByteArray> arguments) : m_arguments(std::move(arguments)) { }

QByteArray BareCommand::run() const
{
    std::vector<char *> pointers;
    for (const auto &argument : m_arguments)
        pointers.push_back(const_cast<char *>(argument.constData()));
    pointers.push_back(nullptr);

    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw driver::DriverError(QStringLiteral("no pipe"));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    pid_t child = -1;
    const int failure = ::posix_spawn(&child, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);

    QByteArray output;
    char buffer[65536];
    for (ssize_t count = 0; failure == 0 && (count = ::read(ends[0], buffer, sizeof buffer)) > 0;)
        output.append(buffer, count);
    ::close(ends[0]);
    int status = 0;
    if (failure != 0 || ::waitpid(child, &status, 0) != child || status != 0)
        throw driver::DriverError(QStringLiteral("%1 fails").arg(QString::fromUtf8(m_arguments.front())));
    return output;
}

} // namespace quillnest::bench
