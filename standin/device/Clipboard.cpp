#include "device/Clipboard.h"

namespace standin
{

QString Clipboard::text() const
{
    const std::lock_guard lock(m_mutex);
    return m_text;
}

void Clipboard::setText(const QString &text, int author)
{
    std::map<int, Listener> listeners;
    {
        const std::lock_guard lock(m_mutex);
        if (author != 0)
            ++m_setByClient;
        if (m_text == text)
            return; // no change, nothing to tell
        m_text = text;
        listeners = m_listeners;
    }
    for (const auto &[id, listener] : listeners) {
        if (id != author)
            listener(text);
    }
}

int Clipboard::setByClientCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_setByClient;
}

int Clipboard::addListener(Listener listener)
{
    const std::lock_guard lock(m_mutex);
    m_listeners[++m_lastId] = std::move(listener);
    return m_lastId;
}

void Clipboard::removeListener(int id)
{
    const std::lock_guard lock(m_mutex);
    m_listeners.erase(id);
}

} // namespace standin
