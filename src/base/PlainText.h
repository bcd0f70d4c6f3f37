#pragma once

#include <QChar>
#include <QString>

#include <algorithm>

namespace quillnest
{

/// Whether a character does something in place of showing something: control characters, which drive a terminal, and
/// those that turn the direction of the text around them or break lines.
inline bool isCommanding(QChar character)
{
    const auto code = character.unicode();
    return character.category() == QChar::Other_Control || (code >= 0x202A && code <= 0x202E)
        || (code >= 0x2066 && code <= 0x2069) || code == 0x200E || code == 0x200F || code == 0x061C || code == 0x2028
        || code == 0x2029;
}

/// Labels, file names and what other programs say come from anywhere, and what is made of them is read in terminals.
inline QString plainLine(QString line)
{
    std::replace_if(line.begin(), line.end(), isCommanding, QChar(u' '));
    return line;
}

/// A name that comes from outside as it is kept: on one line, of a length that a tile, a sort and the library can bear,
/// and with blanks for what commands.
inline QString plainName(QString name)
{
    constexpr qsizetype longest = 200;
    if (name.size() > longest) {
        // Not through the middle of a pair.
        name.truncate(name[longest].isLowSurrogate() ? longest - 1 : longest);
    }
    std::replace_if(name.begin(), name.end(), isCommanding, QChar(u' '));
    return name.trimmed();
}

} // namespace quillnest
