#include "ctl/Output.h"

#include "ctl/Errors.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace quillnest::ctl
{

bool print(const QByteArray &text)
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
            throw Failure(QStringLiteral("can't write: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
        }
    }
    return true;
}

void complain(const QString &text)
{
    std::fprintf(stderr, "quillnestctl: %s\n", qUtf8Printable(text));
}

} // namespace quillnest::ctl
