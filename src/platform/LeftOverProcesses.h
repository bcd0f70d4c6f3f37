#pragma once

#include "platform/ChildProcesses.h"

namespace quillnest
{

/// Ends this user's own processes whose command line holds `text`, such as an earlier run left behind that was killed.
/// Returns at once, and whether any were found is not told. Other users' processes stay.
void endLeftOverProcesses(ChildProcesses &processes, const QString &text);

} // namespace quillnest
