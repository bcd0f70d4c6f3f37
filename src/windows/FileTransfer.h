#pragma once

#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

namespace quillnest
{

/// Takes files into Android, as the windows ask for it when files are dropped on them.
class FileTransfer
{
public:
    struct Outcome {
        QString title;
        QString text;
    };

    virtual ~FileTransfer() = default;

    /// Copies the files to where the app finds them; blocks, so not on the main thread. The outcome is for the user.
    virtual Outcome push(const QList<QUrl> &files, const QString &package, std::optional<int> displayID) = 0;
};

} // namespace quillnest
