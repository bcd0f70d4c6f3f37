#include "platform/StandardOutput.h"

#include <QSocketNotifier>

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace quillnest
{

bool writeToStandardOutput(const QByteArray &text)
{
    for (qsizetype done = 0; done < text.size();) {
        const auto count
            = ::write(STDOUT_FILENO, text.constData() + done, static_cast<std::size_t>(text.size() - done));
        if (count >= 0) {
            done += count;
        } else if (errno == EPIPE) {
            return false;
        } else if (errno == EAGAIN) {
            // Whoever shares the descriptor has made it not wait by itself.
            pollfd entry{STDOUT_FILENO, POLLOUT, 0};
            ::poll(&entry, 1, -1);
        } else if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category());
        }
    }
    return true;
}

bool standardOutputIsTerminal()
{
    return ::isatty(STDOUT_FILENO) == 1;
}

bool standardErrorIsTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

void watchReaderOfStandardOutput(QObject *owner, std::function<void()> gone)
{
    auto *reader = new QSocketNotifier(STDOUT_FILENO, QSocketNotifier::Exception, owner);
    QObject::connect(reader, &QSocketNotifier::activated, owner, [gone = std::move(gone)] { gone(); });
}

void endAtOnceWhenAsked()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, [](int) { ::_exit(0); });
}

} // namespace quillnest
