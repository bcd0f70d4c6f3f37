#pragma once

#include "base/QuillnestSettings.h"
#include "platform/SettingsStore.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>
#include <type_traits>

namespace quillnest
{

/// What is known of a setting without reading it, for tables of all settings.
struct SettingDeclaration {
    /// The whole key, or what the keys of a family of settings begin with.
    QString key;
    bool isFamily = false;
    /// One word: boolean, number, integer, text, texts, data or record.
    QString type;
    /// Invalid where an absent key simply means that there is nothing.
    QVariant defaultValue;
    QString meaning;
};

/// One setting: its key, its type and the default that holds while the key is absent or holds a value of another type.
/// Declared once, in the header `{Room}Settings.h` of the room that owns it, and read and written through here only.
/// Nothing is cached, so removing a key restores its default. Any thread.
///
/// `Value` is bool, double, qint64 or QString.
template <typename Value> class Setting
{
public:
    /// A text's default stands in the program as Latin-1.
    using Default = std::conditional_t<std::is_same_v<Value, QString>, const char *, Value>;

    constexpr Setting(const char *key, Default defaultValue, const char *meaning)
        : m_key(key), m_default(defaultValue), m_meaning(meaning)
    {
    }

    QString key() const { return QString::fromLatin1(m_key); }
    constexpr Value defaultValue() const
    {
        if constexpr (std::is_same_v<Value, QString>)
            return QString::fromLatin1(m_default);
        else
            return m_default;
    }

    Value value(const SettingsStore &settings) const
    {
        if constexpr (std::is_same_v<Value, bool>)
            return QuillnestSettings::flag(settings, key(), m_default);
        else if constexpr (std::is_same_v<Value, double>)
            return QuillnestSettings::number(settings, key(), m_default);
        else if constexpr (std::is_same_v<Value, qint64>)
            return QuillnestSettings::integer(settings, key(), m_default);
        else
            return QuillnestSettings::text(settings, key(), defaultValue());
    }

    /// Answers why the value could not be written; then the old one stays.
    std::optional<QString> set(SettingsStore &settings, const Value &value) const
    {
        return settings.setValue(key(), QVariant::fromValue(value));
    }

    SettingDeclaration declaration() const
    {
        const char *type = std::is_same_v<Value, bool> ? "boolean"
            : std::is_same_v<Value, double>            ? "number"
            : std::is_same_v<Value, qint64>            ? "integer"
                                                       : "text";
        return {
            .key = key(),
            .type = QString::fromLatin1(type),
            .defaultValue = QVariant::fromValue(defaultValue()),
            .meaning = QString::fromUtf8(m_meaning)};
    }

private:
    const char *m_key;
    Default m_default;
    const char *m_meaning;
};

/// A value that the program keeps for itself under one key, without a default.
class SettingRecord
{
public:
    /// `type` is one of the words of SettingDeclaration.
    constexpr SettingRecord(const char *key, const char *type, const char *meaning)
        : m_key(key), m_type(type), m_meaning(meaning)
    {
    }

    QString key() const { return QString::fromLatin1(m_key); }

    SettingDeclaration declaration() const
    {
        return {
            .key = key(),
            .type = QString::fromLatin1(m_type),
            .defaultValue = {},
            .meaning = QString::fromUtf8(m_meaning)};
    }

private:
    const char *m_key;
    const char *m_type;
    const char *m_meaning;
};

/// Records of one kind, whose keys begin alike and end in what each is about: a path, a package.
class SettingFamily
{
public:
    constexpr SettingFamily(const char *prefix, const char *type, const char *meaning)
        : m_prefix(prefix), m_type(type), m_meaning(meaning)
    {
    }

    QString key(const QString &of) const { return QString::fromLatin1(m_prefix) + of; }

    SettingDeclaration declaration() const
    {
        return {
            .key = QString::fromLatin1(m_prefix),
            .isFamily = true,
            .type = QString::fromLatin1(m_type),
            .defaultValue = {},
            .meaning = QString::fromUtf8(m_meaning)};
    }

private:
    const char *m_prefix;
    const char *m_type;
    const char *m_meaning;
};

/// The declarations of a room's settings, in the order in which they are given.
template <typename... Settings> QList<SettingDeclaration> declarations(const Settings &...settings)
{
    return {settings.declaration()...};
}

} // namespace quillnest
