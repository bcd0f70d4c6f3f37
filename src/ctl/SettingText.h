#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

namespace quillnest::ctl
{

/// Values of settings as JSON on one line. Bytes, which JSON doesn't have, are {"$data": "base64"}, as in the file; so
/// what is printed can be set again and is the same value.
namespace SettingText
{
QByteArray toJson(const QVariant &value);

/// Throws UsageError for what is no JSON, for null, and for bytes that aren't base64.
QVariant fromJson(const QString &text);

enum class Type { boolean, integer, real, text, data };

/// A value of one type from its plain text; throws UsageError for a text that doesn't stand for one.
QVariant fromText(Type type, const QString &text);
} // namespace SettingText

} // namespace quillnest::ctl
