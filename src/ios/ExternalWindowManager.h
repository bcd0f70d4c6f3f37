#pragma once

#include "ios/ExternalWindowError.h"
#include "platform/Platform.h"

#include <QSizeF>
#include <QString>

namespace quillnest::ExternalWindowManager
{

/// Makes the first window of another program compact: at least 320 by 520 points and at most the main screen's free
/// area, at that area's right edge and in the middle of its height. Throws ExternalWindowError. Main thread.
void arrange(const Platform &platform, const QString &bundleIdentifier, QSizeF size);

} // namespace quillnest::ExternalWindowManager
