#pragma once

#include <QString>

namespace quillnest
{

/// Words as a tool tip that shows them as they are written, whatever they hold: names, file names and messages come
/// from outside, and the toolkit would read markup in them.
QString plainToolTip(const QString &words);

/// Words as the title of a menu's entry, in which an ampersand would mark a key.
QString plainMenuTitle(QString words);

} // namespace quillnest
