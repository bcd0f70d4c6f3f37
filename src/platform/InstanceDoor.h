#pragma once

#include <QObject>
#include <QStringList>

namespace quillnest
{

/// One running program for each user's data. The first to come owns the door; whoever comes later hands its arguments
/// through it and ends. Main thread.
class InstanceDoor : public QObject
{
    Q_OBJECT

public:
    enum class Entry {
        /// This process is the one. Also where the host has no way to tell: better two than none.
        first,
        /// Another one runs and has taken the arguments.
        handedOver,
        /// Another one runs, and does not answer.
        noAnswer,
    };

    /// Comes in, or hands the arguments over. `folder` is the one the user's data is in; file names among the arguments
    /// mean what they mean to this process. Blocks for five seconds at most.
    virtual Entry enter(const QString &folder, const QStringList &arguments) = 0;

Q_SIGNALS:
    /// Another start has handed over its arguments, the program's name first, and the folder that it was started in.
    void knocked(const QStringList &arguments, const QString &workingFolder);
};

} // namespace quillnest
