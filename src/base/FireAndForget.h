#pragma once

#include "base/QuillnestLog.h"
#include "platform/DescribedError.h"
#include "platform/Tasks.h"

#include <memory>

namespace quillnest
{

/// Lets a task go on that nobody awaits; what it throws is logged, since nobody else would see it. The task has begun
/// by the time it gets here; its frame lives until it ends.
inline void fireAndForget(std::shared_ptr<QuillnestLog> log, Task<> task)
{
    [](std::shared_ptr<QuillnestLog> sink, Task<> running) -> Task<> {
        try {
            co_await running;
        } catch (const std::exception &error) {
            sink->write(QStringLiteral("task failed error=%1").arg(descriptionOf(error)));
        }
    }(std::move(log), std::move(task));
}

} // namespace quillnest
