#pragma once

#include <QJsonObject>
#include <QString>

namespace standin
{

/// An object in a file. A missing or broken file reads as an empty object; a write either happens whole or not.
QJsonObject readJsonFile(const QString &path);
bool writeJsonFile(const QString &path, const QJsonObject &object);

} // namespace standin
