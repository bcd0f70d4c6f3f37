#pragma once

#include <QStringList>

namespace quillnest::ctl
{

// The commands, each with the arguments behind its name. They throw UsageError and Failure; the result is the exit
// status. All need a QCoreApplication.
int post(const QStringList &arguments);
int state(const QStringList &arguments);
int settings(const QStringList &arguments);
int log(const QStringList &arguments);

} // namespace quillnest::ctl
