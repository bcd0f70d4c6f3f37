#pragma once

#include <QObject>

namespace quillnest
{

/// The desktop's appearance, light or dark.
class Appearance : public QObject
{
    Q_OBJECT

public:
    /// Whether the user has asked for dark. Answers at once; any thread.
    virtual bool isDark() const = 0;

Q_SIGNALS:
    /// The user changed it. Main thread.
    void changed();
};

} // namespace quillnest
