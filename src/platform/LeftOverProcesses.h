#pragma once

#include "platform/ChildProcesses.h"

namespace quillnest
{

/// Ends this user's own processes whose command line holds these texts, one behind the other, such as an earlier run
/// left behind that was killed. Returns at once, and whether any were found is not told. Other users' processes stay.
///
/// Asked processes may clean up; by force they are ended even when they stand still.
enum class Ending { asked, byForce };
void endLeftOverProcesses(ChildProcesses &processes, const QStringList &texts, Ending ending = Ending::asked);

} // namespace quillnest
