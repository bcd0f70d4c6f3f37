#include "common/RunProgram.h"

#include "common/UniqueFd.h"

#include <QFile>
#include <QList>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <vector>

namespace standin
{

std::optional<QByteArray> outputOf(const QString &program, const QStringList &arguments)
{
    std::array<int, 2> ends = {-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return std::nullopt;
    const UniqueFd reader(ends[0]);
    UniqueFd writer(ends[1]);
    QList<QByteArray> words = {QFile::encodeName(program)};
    for (const QString &argument : arguments)
        words.append(QFile::encodeName(argument));
    std::vector<char *> argv;
    for (QByteArray &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, writer.get(), STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    const int problem = ::posix_spawnp(&pid, argv.front(), &actions, nullptr, argv.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (problem != 0)
        return std::nullopt;
    writer.reset();

    QByteArray output;
    QByteArray buffer(64 * 1024, Qt::Uninitialized);
    for (;;) {
        const ssize_t got = ::read(reader.get(), buffer.data(), static_cast<size_t>(buffer.size()));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        output.append(buffer.constData(), got);
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) { }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? std::optional(output) : std::nullopt;
}

} // namespace standin
