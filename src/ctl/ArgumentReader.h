#pragma once

#include <QStringList>

#include <optional>

namespace quillnest::ctl
{

/// Takes the options out of what follows a command's name and leaves its operands. An option begins with "--", or with
/// "-" and a letter, so that a negative number is an operand; "--" by itself ends the options.
class ArgumentReader
{
public:
    explicit ArgumentReader(const QStringList &arguments);

    /// Whether an option is there, by any of its names.
    bool takeFlag(const QStringList &names);
    /// The value of an option, which is the next argument, or what follows "=", or, for one letter, what follows it
    /// directly. Throws UsageError when it has none.
    std::optional<QString> takeValue(const QStringList &names);

    /// What is left, which has to be one operand for each name. Throws UsageError for an option that nobody took, and
    /// for an operand that is missing or too much.
    QStringList operands(const QStringList &names) const;

private:
    bool isOption(qsizetype index) const;

    QStringList m_arguments;
    /// From here on all are operands.
    qsizetype m_end = 0;
};

} // namespace quillnest::ctl
