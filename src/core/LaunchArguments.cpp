#include "core/LaunchArguments.h"

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
    return good ? std::optional(number) : std::nullopt;
}

} // namespace quillnest::LaunchArguments
