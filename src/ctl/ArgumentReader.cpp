#include "ctl/ArgumentReader.h"

#include "ctl/Errors.h"

namespace quillnest::ctl
{

ArgumentReader::ArgumentReader(const QStringList &arguments) : m_arguments(arguments)
{
    m_end = m_arguments.indexOf(QStringLiteral("--"));
    if (m_end < 0)
        m_end = m_arguments.size();
    else
        m_arguments.removeAt(m_end);
}

bool ArgumentReader::isOption(qsizetype index) const
{
    const auto &argument = m_arguments[index];
    return index < m_end && argument.size() > 1 && argument.startsWith(u'-')
        && (argument[1] == u'-' || argument[1].isLetter());
}

bool ArgumentReader::takeFlag(const QStringList &names)
{
    bool found = false;
    for (qsizetype i = 0; i < m_end;) {
        if (names.contains(m_arguments[i])) {
            m_arguments.removeAt(i);
            --m_end;
            found = true;
        } else {
            ++i;
        }
    }
    return found;
}

std::optional<QString> ArgumentReader::takeValue(const QStringList &names)
{
    std::optional<QString> value;
    for (qsizetype i = 0; i < m_end;) {
        const auto argument = m_arguments[i];
        std::optional<QString> found;
        qsizetype length = 1;
        for (const auto &name : names) {
            const bool isLong = name.startsWith(QStringLiteral("--"));
            if (argument == name) {
                if (i + 1 >= m_end)
                    throw UsageError(QStringLiteral("%1 needs a value").arg(name));
                found = m_arguments[i + 1];
                length = 2;
            } else if (isLong && argument.startsWith(name + u'=')) {
                found = argument.sliced(name.size() + 1);
            } else if (!isLong && argument.startsWith(name)) {
                found = argument.sliced(name.size());
            }
        }
        if (!found) {
            ++i;
            continue;
        }
        m_arguments.remove(i, length);
        m_end -= length;
        value = found;
    }
    return value;
}

QStringList ArgumentReader::operands(const QStringList &names) const
{
    for (qsizetype i = 0; i < m_end; ++i) {
        if (isOption(i))
            throw UsageError(QStringLiteral("unknown option \"%1\"").arg(m_arguments[i]));
    }
    if (m_arguments.size() < names.size())
        throw UsageError(QStringLiteral("missing %1").arg(names[m_arguments.size()]));
    if (m_arguments.size() > names.size())
        throw UsageError(QStringLiteral("\"%1\" is one argument too many").arg(m_arguments[names.size()]));
    return m_arguments;
}

} // namespace quillnest::ctl
