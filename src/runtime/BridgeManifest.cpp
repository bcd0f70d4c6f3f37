#include "runtime/BridgeManifest.h"

#include "runtime/AndroidBridgeError.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace quillnest
{

namespace
{
QString requiredText(const QJsonObject &object, const QString &key)
{
    const auto value = object.value(key);
    if (!value.isString())
        throw AndroidBridgeError::manifestUnreadable(QStringLiteral("\"%1\" is no text").arg(key));
    return value.toString();
}
} // namespace

BridgeManifest BridgeManifest::parse(const QByteArray &json)
{
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        throw AndroidBridgeError::manifestUnreadable(error.errorString());
    const auto root = document.object();
    const auto list = root.value(QStringLiteral("components"));
    if (!list.isArray())
        throw AndroidBridgeError::manifestUnreadable(QStringLiteral("\"components\" is no list"));

    BridgeManifest manifest;
    const auto version = root.value(QStringLiteral("bridgeVersion"));
    if (!version.isUndefined() && !version.isNull())
        manifest.bridgeVersion = requiredText(root, QStringLiteral("bridgeVersion"));
    for (const auto &item : list.toArray()) {
        if (!item.isObject())
            throw AndroidBridgeError::manifestUnreadable(QStringLiteral("a component is no object"));
        const auto component = item.toObject();
        manifest.components.push_back(
            {requiredText(component, QStringLiteral("path")), requiredText(component, QStringLiteral("sha256"))});
    }
    return manifest;
}

} // namespace quillnest
