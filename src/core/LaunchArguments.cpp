#include "core/LaunchArguments.h"

#include <QDir>

#include <algorithm>
#include <cmath>

namespace quillnest::LaunchArguments
{

bool has(const QString &name, const QStringList &arguments)
{
    return arguments.contains(name);
}

std::optional<QString> value(const QString &name, const QStringList &arguments)
{
    const auto at = arguments.indexOf(name);
    if (at < 0 || at + 1 >= arguments.size())
        return std::nullopt;
    return arguments[at + 1];
}

std::optional<double> numericArgument(const QString &name, const QStringList &arguments)
{
    const auto text = value(name, arguments);
    bool good = false;
    const double number = text ? text->toDouble(&good) : 0;
    return good && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

QStringList files(const QStringList &arguments, const QString &folder)
{
    static const QStringList withValue{
        QStringLiteral("--launch-apk"), QStringLiteral("--arrange"), QStringLiteral("--width"),
        QStringLiteral("--height"), QStringLiteral("--open-app")};
    static const QStringList endings{QStringLiteral(".apk"), QStringLiteral(".ipa")};
    QStringList result;
    // The first argument is the program itself.
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const auto &argument = arguments[i];
        if (withValue.contains(argument))
            ++i;
        else if (
            !argument.startsWith(QLatin1Char('-'))
            && std::any_of(endings.begin(), endings.end(), [&](const auto &ending) {
                   return argument.endsWith(ending, Qt::CaseInsensitive);
               }))
            result.append(QDir::cleanPath(QDir(folder).absoluteFilePath(argument)));
    }
    return result;
}

} // namespace quillnest::LaunchArguments
