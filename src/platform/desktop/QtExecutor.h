#pragma once

#include "platform/Executor.h"

#include <QObject>
#include <QThreadPool>

namespace quillnest
{

/// The main thread's event loop, a pool of threads, and a thread for each serial queue. Made on the main thread.
class QtExecutor : public Executor
{
public:
    QtExecutor();
    ~QtExecutor() override;

    void onMain(std::function<void()> work) override;
    void inBackground(std::function<void()> work) override;
    std::unique_ptr<SerialQueue> serialQueue(const char *label) override;

private:
    QObject m_context;
    QThreadPool m_pool;
};

} // namespace quillnest
