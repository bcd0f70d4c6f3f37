#pragma once

#include "driver/ProgramUnderTest.h"

#include <QJsonObject>

namespace quillnest::driver
{

/// Goes the whole main road as a user would, from a machine without Android: consents on the screen, downloads, boots,
/// adds the sample apps, clicks one, hears it, touches it, types, copies and pastes, resizes, closes, opens again,
/// quits. Leaves "setup.png", "panel.png", "window.png", "resized.png", "report.json" and the logs in `folder`. Throws
/// DriverError at the first step that does not happen. The report holds only what was measured on the way.
QJsonObject goTheRoad(const QString &folder);

} // namespace quillnest::driver
