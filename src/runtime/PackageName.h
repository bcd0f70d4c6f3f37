#pragma once

#include <QStringView>

namespace quillnest
{

/// Whether a text is an Android package name: at least two segments joined by dots, each a letter followed by letters,
/// digits and underscores, all ASCII, at most 255 characters. Names from an APK or a device are checked with this
/// before they go into any text for a device shell.
bool isValidPackageName(QStringView name);

} // namespace quillnest
