#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace quillnest
{

/// The flags that the program reads at start. Unknown arguments are ignored.
namespace LaunchArguments
{
bool has(const QString &name, const QStringList &arguments);

/// The argument after the first one equal to `name`, if there is one.
std::optional<QString> value(const QString &name, const QStringList &arguments);

/// The same as a decimal number; absent for a value that is none.
std::optional<double> numericArgument(const QString &name, const QStringList &arguments);

/// The package files among the arguments, as absolute paths: what is no flag and no flag's value and ends as a package
/// does. A relative one is meant from `folder`.
QStringList files(const QStringList &arguments, const QString &folder);
} // namespace LaunchArguments

} // namespace quillnest
