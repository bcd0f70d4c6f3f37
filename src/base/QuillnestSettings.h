#pragma once

#include "platform/SettingsStore.h"

#include <QSizeF>

namespace quillnest
{

/// Reading typed values out of the settings. A `Setting` holds key and default together and is what readers use.
/// Nothing is registered in advance and nothing is cached: removing a key restores its default with no other step.
namespace QuillnestSettings
{
/// The value if the key holds a boolean, otherwise the default: a value of another type counts as absent.
bool flag(const SettingsStore &settings, const QString &key, bool defaultValue);
/// The value if the key holds a number (a boolean is none), otherwise the default.
double number(const SettingsStore &settings, const QString &key, double defaultValue);
/// The value, without its fraction, if the key holds a number that fits, otherwise the default.
qint64 integer(const SettingsStore &settings, const QString &key, qint64 defaultValue);
/// The value if the key holds text, otherwise the default.
QString text(const SettingsStore &settings, const QString &key, const QString &defaultValue);
} // namespace QuillnestSettings

} // namespace quillnest
