#pragma once

#include <QString>
#include <functional>
#include <map>
#include <mutex>

namespace standin
{

/// The device's one clipboard. Listeners hear of a change unless they made it. Thread safe; a listener runs on the
/// thread of the change, without a lock held, and must not wait.
class Clipboard
{
public:
    using Listener = std::function<void(const QString &text)>;

    QString text() const;
    /// `author` is the id of the listener that sets the text, 0 when it comes from the device itself.
    void setText(const QString &text, int author);
    int setByClientCount() const;

    int addListener(Listener listener);
    void removeListener(int id);

private:
    mutable std::mutex m_mutex;
    QString m_text;
    int m_setByClient = 0;
    int m_lastId = 0;
    std::map<int, Listener> m_listeners;
};

} // namespace standin
