#pragma once

#include "base/Setting.h"

namespace quillnest::ctl
{

/// What every room declares, room by room. The build puts the list together from the rooms' settings headers.
QList<SettingDeclaration> allSettings();

} // namespace quillnest::ctl
