#pragma once

#include <QByteArray>
#include <QString>
#include <QStringDecoder>

#include <optional>

namespace quillnest
{

/// The text that bytes stand for, byte order mark included; absent unless all of them are valid UTF-8.
inline std::optional<QString> strictUtf8(const QByteArray &bytes)
{
    QStringDecoder decoder(
        QStringConverter::Utf8, QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(std::move(text));
}

} // namespace quillnest
