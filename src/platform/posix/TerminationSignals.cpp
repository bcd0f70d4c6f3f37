#include "platform/TerminationSignals.h"

#include "platform/CurrentThread.h"

#include <csignal>

namespace quillnest
{

namespace
{

sigset_t terminationSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction action {
        };
        // Whoever starts a program to outlive its terminal has it ignore the terminal's end.
        if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
            sigaddset(&signals, signal);
    }
    return signals;
}

} // namespace

void TerminationSignals::block()
{
    ::signal(SIGPIPE, SIG_IGN);
    // Blocked in every thread, so that they come only to the one that waits for them.
    const auto signals = terminationSignals();
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

TerminationSignals::TerminationSignals(std::function<void()> atOnce)
    : m_waiting([this, atOnce = std::move(atOnce)] {
        nameCurrentThread("signals");
        const auto signals = terminationSignals();
        for (int signal = 0; ::sigwait(&signals, &signal) == 0 && !m_ending;) {
            if (atOnce)
                atOnce();
            QMetaObject::invokeMethod(this, &TerminationSignals::requested, Qt::QueuedConnection);
        }
    })
{
}

TerminationSignals::~TerminationSignals()
{
    m_ending = true;
    // To that thread alone, which is waiting for just this.
    ::pthread_kill(m_waiting.native_handle(), SIGTERM);
    m_waiting.join();
}

} // namespace quillnest
