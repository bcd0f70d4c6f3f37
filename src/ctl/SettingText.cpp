#include "ctl/SettingText.h"

#include "ctl/Errors.h"

#include <QJsonDocument>
#include <QVariantMap>

#include <cmath>

namespace quillnest::ctl::SettingText
{

namespace
{

const auto dataKey = QStringLiteral("$data");

QVariant withoutBytes(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QByteArray:
        return QVariantMap{{dataKey, QString::fromLatin1(value.toByteArray().toBase64())}};
    case QMetaType::QVariantList: {
        QVariantList list;
        for (const auto &element : value.toList())
            list.append(withoutBytes(element));
        return list;
    }
    case QMetaType::QVariantMap: {
        auto map = value.toMap();
        for (auto &element : map)
            element = withoutBytes(element);
        return map;
    }
    default:
        return value;
    }
}

QByteArray bytes(const QString &text)
{
    const auto decoded = QByteArray::fromBase64Encoding(text.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        throw UsageError(QStringLiteral("\"%1\" is not base64").arg(text));
    return *decoded;
}

QVariant withBytes(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QVariantList: {
        QVariantList list;
        for (const auto &element : value.toList())
            list.append(withBytes(element));
        return list;
    }
    case QMetaType::QVariantMap: {
        auto map = value.toMap();
        if (map.size() == 1 && map.contains(dataKey)) {
            const auto text = map.value(dataKey);
            if (text.typeId() != QMetaType::QString)
                throw UsageError(QStringLiteral("\"$data\" takes base64 as text"));
            return bytes(text.toString());
        }
        for (auto &element : map)
            element = withBytes(element);
        return map;
    }
    default:
        return value;
    }
}

} // namespace

QByteArray toJson(const QVariant &value)
{
    // A document holds a list or an object, so a single value goes in as a list of one.
    const auto text = QJsonDocument::fromVariant(QVariantList{withoutBytes(value)}).toJson(QJsonDocument::Compact);
    return text.sliced(1, text.size() - 2);
}

QVariant fromJson(const QString &text)
{
    QJsonParseError error{};
    const auto list = QJsonDocument::fromJson(QStringLiteral("[%1]").arg(text).toUtf8(), &error).toVariant().toList();
    if (error.error != QJsonParseError::NoError || list.size() != 1)
        throw UsageError(QStringLiteral("\"%1\" is not JSON; --text takes it as text").arg(text));
    if (list.constFirst().isNull())
        throw UsageError(QStringLiteral("null is no value; \"settings unset\" takes a setting away"));
    return withBytes(list.constFirst());
}

QVariant fromText(Type type, const QString &text)
{
    const auto reject = [&text](const char *what) -> UsageError {
        return UsageError(QStringLiteral("\"%1\" is not %2").arg(text, QLatin1String(what)));
    };
    bool good = false;
    switch (type) {
    case Type::boolean:
        if (text != QStringLiteral("true") && text != QStringLiteral("false"))
            throw reject("true or false");
        return text == QStringLiteral("true");
    case Type::integer: {
        const auto number = text.toLongLong(&good);
        if (!good)
            throw reject("a whole number of 64 bits");
        return number;
    }
    case Type::real: {
        const double number = text.toDouble(&good);
        if (!good || !std::isfinite(number))
            throw reject("a number");
        return number;
    }
    case Type::text:
        return text;
    case Type::data:
        return bytes(text);
    }
    throw reject("of a known type");
}

} // namespace quillnest::ctl::SettingText
