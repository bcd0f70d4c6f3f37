#pragma once

#include <QByteArray>

#include <functional>

class QObject;

namespace quillnest
{

// The standard output of a program that is a command. Main thread.

/// Writes at once and whole, and waits where whoever reads is slow. False when nobody reads it any more, which is no
/// failure; throws std::system_error when it can't be written for another reason. Writes to closed pipes must not end
/// the process.
bool writeToStandardOutput(const QByteArray &text);

/// Whether a person reads it, or what is said beside it.
bool standardOutputIsTerminal();
bool standardErrorIsTerminal();

/// Calls `gone` from the event loop when whoever reads goes away, though nothing is written. Ends with `owner`.
void watchReaderOfStandardOutput(QObject *owner, std::function<void()> gone);

/// From now on a request to end, such as Control-C, ends the process with status 0 at once, even out of a write that
/// waits. For programs that hold nothing back.
void endAtOnceWhenAsked();

} // namespace quillnest
