#pragma once

#include <QtGlobal>

namespace quillnest::bench
{

/// Processor time that all threads of a running process have used so far, in milliseconds.
double processorMilliseconds(qint64 process);

/// The same of the calling thread.
double threadMilliseconds();

} // namespace quillnest::bench
