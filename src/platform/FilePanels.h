#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <functional>

namespace quillnest
{

/// What an open panel lets its user choose.
struct OpenPanel {
    QString title;
    /// What the files are called together: "Android apps".
    QString kind;
    /// Endings of their names, lower case and without the dot.
    QStringList extensions;
    bool allowsSeveral = false;
};

/// The desktop's panel for choosing files. Main thread.
class FilePanels
{
public:
    virtual ~FilePanels() = default;

    /// Brings the program to the front and shows the panel, without blocking the caller. `answer` gets what was chosen,
    /// or nothing if the user thought better of it, on the main thread.
    virtual void open(const OpenPanel &panel, std::function<void(const QList<QUrl> &)> answer) = 0;
};

} // namespace quillnest
