#include "core/LibraryFormat.h"

#include "base/PlainText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>

#include <cmath>

namespace quillnest::LibraryFormat
{

namespace
{

const auto idKey = QStringLiteral("id");
const auto nameKey = QStringLiteral("name");
const auto platformKey = QStringLiteral("platform");
const auto sourcePathKey = QStringLiteral("sourcePath");
const auto bundleIdentifierKey = QStringLiteral("bundleIdentifier");
const auto addedAtKey = QStringLiteral("addedAt");
const auto isFavoriteKey = QStringLiteral("isFavorite");

QDateTime epoch()
{
    return QDateTime(QDate(2001, 1, 1), QTime(0, 0), QTimeZone::utc());
}

std::optional<MobileApp> decodeApp(const QJsonObject &object)
{
    const auto platform = platformFromText(object.value(platformKey).toString());
    const auto id = QUuid::fromString(object.value(idKey).toString());
    const auto bundleIdentifier = object.value(bundleIdentifierKey);
    const bool good = !id.isNull() && platform && object.value(nameKey).isString()
        && object.value(sourcePathKey).isString() && object.value(addedAtKey).isDouble()
        && object.value(isFavoriteKey).isBool()
        && (bundleIdentifier.isUndefined() || bundleIdentifier.isNull() || bundleIdentifier.isString());
    if (!good)
        return std::nullopt;
    MobileApp app;
    app.id = id;
    app.name = plainName(object.value(nameKey).toString());
    app.platform = *platform;
    app.sourcePath = object.value(sourcePathKey).toString();
    if (bundleIdentifier.isString())
        app.bundleIdentifier = bundleIdentifier.toString();
    app.addedAt = epoch().addMSecs(static_cast<qint64>(std::round(object.value(addedAtKey).toDouble() * 1000)));
    app.isFavorite = object.value(isFavoriteKey).toBool();
    return app;
}

} // namespace

QByteArray encode(const std::vector<MobileApp> &apps)
{
    QJsonArray array;
    for (const auto &app : apps) {
        QJsonObject object{
            {idKey, uuidText(app.id)},
            {nameKey, app.name},
            {platformKey, platformText(app.platform)},
            {sourcePathKey, app.sourcePath},
            {addedAtKey, static_cast<double>(epoch().msecsTo(app.addedAt)) / 1000},
            {isFavoriteKey, app.isFavorite},
        };
        if (app.bundleIdentifier)
            object.insert(bundleIdentifierKey, *app.bundleIdentifier);
        array.append(object);
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<std::vector<MobileApp>> decode(const QByteArray &bytes)
{
    const auto document = QJsonDocument::fromJson(bytes);
    if (!document.isArray())
        return std::nullopt;
    std::vector<MobileApp> apps;
    for (const auto &element : document.array()) {
        auto app = decodeApp(element.toObject());
        if (!app)
            return std::nullopt;
        apps.push_back(std::move(*app));
    }
    return apps;
}

} // namespace quillnest::LibraryFormat
