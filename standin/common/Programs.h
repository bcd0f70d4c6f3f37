#pragma once

#include <QString>

namespace standin
{

/// The helper that lies beside the emulator program: the device's own commands, and the way into its tree.
QString deviceToolPath();

} // namespace standin
