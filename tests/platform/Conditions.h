#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QTimer>

#include <chrono>
#include <thread>

#include <unistd.h>

namespace quillnest
{

/// Runs the event loop until the condition holds, or gives up after half a minute. Whether it holds.
template <typename Condition> bool comesTrue(Condition condition)
{
    QTimer tick;
    tick.start(2);
    for (const QDeadlineTimer limit(30000); !condition();) {
        if (limit.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}

/// The same with a main thread that does nothing else meanwhile.
template <typename Condition> bool comesTrueWithoutMain(Condition condition)
{
    for (const QDeadlineTimer limit(30000); !condition();) {
        if (limit.hasExpired())
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// How many sockets and pipes this process has open. What Qt's own threads open beside them doesn't count.
inline int openStreams()
{
    int count = 0;
    const QDir folder(QStringLiteral("/proc/self/fd"));
    for (const auto &entry : folder.entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot)) {
        char target[256];
        const auto length = ::readlink(QFile::encodeName(folder.filePath(entry)).constData(), target, sizeof target);
        const QByteArray text(target, length > 0 ? length : 0);
        count += text.startsWith("socket:") || text.startsWith("pipe:") ? 1 : 0;
    }
    return count;
}

/// How many threads this process has, without the pool's, which stay a while for the next piece of work.
inline int ownThreads()
{
    // A sanitizer starts a thread of its own together with a program's first one.
    static const bool warm = [] {
        std::thread([] {}).join();
        return true;
    }();
    Q_UNUSED(warm);
    int count = 0;
    const QDir folder(QStringLiteral("/proc/self/task"));
    for (const auto &entry : folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile name(folder.filePath(entry) + QStringLiteral("/comm"));
        // A thread may end between the listing and the look at it.
        if (name.open(QIODevice::ReadOnly) && !name.readAll().startsWith("Thread (pooled)"))
            ++count;
    }
    return count;
}

} // namespace quillnest
