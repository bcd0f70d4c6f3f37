#include "base/QuillnestSettings.h"

#include <cmath>

namespace quillnest::QuillnestSettings
{

bool flag(const SettingsStore &settings, const QString &key, bool defaultValue)
{
    const auto value = settings.value(key);
    return value.typeId() == QMetaType::Bool ? value.toBool() : defaultValue;
}

double number(const SettingsStore &settings, const QString &key, double defaultValue)
{
    const auto value = settings.value(key);
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Int:
    case QMetaType::LongLong:
        return value.toDouble();
    default:
        return defaultValue;
    }
}

qint64 integer(const SettingsStore &settings, const QString &key, qint64 defaultValue)
{
    const double value = number(settings, key, static_cast<double>(defaultValue));
    if (!(std::abs(value) < 9e15))
        return defaultValue;
    return static_cast<qint64>(value);
}

QString text(const SettingsStore &settings, const QString &key, const QString &defaultValue)
{
    const auto value = settings.value(key);
    return value.typeId() == QMetaType::QString ? value.toString() : defaultValue;
}

} // namespace quillnest::QuillnestSettings
