#include "platform/TerminationSignals.h"

#include <QSocketNotifier>

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

namespace quillnest
{

namespace
{

sigset_t terminationSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, signal);
    return signals;
}

} // namespace

void TerminationSignals::block()
{
    ::signal(SIGPIPE, SIG_IGN);
    // Blocked in every thread, so that they come only through the descriptor.
    const auto signals = terminationSignals();
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

TerminationSignals::TerminationSignals()
{
    const auto signals = terminationSignals();
    const int descriptor = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    auto *notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, descriptor] {
        signalfd_siginfo info;
        while (::read(descriptor, &info, sizeof info) > 0) { }
        Q_EMIT requested();
    });
}

} // namespace quillnest
