#pragma once

#include <QObject>
#include <QString>

#include <optional>

namespace quillnest
{

class AppSession;

/// What happens to app windows, for those who care about all of them. Main thread. The session is there for the time of
/// the call.
class SessionEvents : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    /// A window has been made; it is shown right after that.
    void opened(quillnest::AppSession *session);
    /// It has come onto the screen.
    void shown(quillnest::AppSession *session);
    /// It has left the screen, to come back or not.
    void hidden(quillnest::AppSession *session);
    /// It is gone; the last that is heard of it. With the error text of an end that nobody asked for.
    void ended(quillnest::AppSession *session, const std::optional<QString> &error);
};

} // namespace quillnest
