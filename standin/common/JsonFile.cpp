#include "common/JsonFile.h"

#include <QFile>
#include <QJsonDocument>
#include <QSaveFile>

namespace standin
{

QJsonObject readJsonFile(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

bool writeJsonFile(const QString &path, const QJsonObject &object)
{
    QSaveFile file(path);
    return file.open(QFile::WriteOnly) && file.write(QJsonDocument(object).toJson()) > 0 && file.commit();
}

} // namespace standin
