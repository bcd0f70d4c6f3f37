#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace quillnest
{

/// A question to the user.
struct Alert {
    enum class Style { informational, warning };

    QString message;
    QString informativeText;
    /// The first is the one that the alert is about; the last is what closing the alert means. The Return key is the
    /// first, of a warning the last.
    QStringList buttons;
    Style style = Style::informational;
};

/// Asks the user. Main thread.
class Alerts
{
public:
    virtual ~Alerts() = default;

    /// Brings the program to the front and shows the alert, which blocks the program's other windows but not the
    /// caller. `answer` gets the index of the chosen button, on the main thread, after this call has returned.
    virtual void ask(const Alert &alert, std::function<void(int button)> answer) = 0;
};

} // namespace quillnest
