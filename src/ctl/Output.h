#pragma once

#include <QByteArray>

namespace quillnest::ctl
{

/// Writes to standard output, at once and whole; to a terminal with what it would obey spelled out. False when nobody
/// reads it any more, which is no failure; throws Failure when it can't be written for another reason. SIGPIPE has to
/// be ignored.
bool print(const QByteArray &text);

/// A line on standard error, after the program's name.
void complain(const QString &text);

} // namespace quillnest::ctl
