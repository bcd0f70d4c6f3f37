#pragma once

#include <QChar>
#include <QString>

namespace quillnest
{

/// Whether a character does something in place of showing something: control characters, which drive a terminal, and
/// those that turn the direction of the text around them or break lines.
inline bool isCommanding(QChar character)
{
    const auto code = character.unicode();
    return character.category() == QChar::Other_Control || (code >= 0x202A && code <= 0x202E)
        || (code >= 0x2066 && code <= 0x2069) || code == 0x2028 || code == 0x2029;
}

} // namespace quillnest
