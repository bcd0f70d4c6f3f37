#include "device/Display.h"

#include <QElapsedTimer>
#include <chrono>

namespace standin
{

namespace
{

constexpr int markLimit = 24; // a drag leaves a tail, not a carpet

} // namespace

qint64 monotonicMilliseconds()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

Display::Display(int id, QSize size, int dpi, bool night) : m_id(id)
{
    m_model.displayId = id;
    m_model.size = size;
    m_model.dpi = dpi;
    m_model.night = night;
}

ScreenModel Display::model() const
{
    const std::lock_guard lock(m_mutex);
    return m_model;
}

quint64 Display::revision() const
{
    const std::lock_guard lock(m_mutex);
    return m_revision;
}

void Display::resize(QSize size)
{
    const std::lock_guard lock(m_mutex);
    m_model.size = size;
    m_model.marks.clear();
    ++m_revision;
}

void Display::setNight(bool night)
{
    const std::lock_guard lock(m_mutex);
    m_model.night = night;
    ++m_revision;
}

void Display::setApp(const std::optional<AppLook> &app)
{
    const std::lock_guard lock(m_mutex);
    const bool same = app.has_value() == m_model.app.has_value() && (!app || app->package == m_model.app->package);
    m_model.app = app;
    m_model.depth = app ? qMax(1, m_model.depth) : 0;
    if (!same) {
        m_model.depth = app ? 1 : 0;
        m_model.text.clear();
        m_model.scroll = 0;
    }
    ++m_revision;
}

void Display::setDepth(int depth)
{
    const std::lock_guard lock(m_mutex);
    m_model.depth = depth;
    ++m_revision;
}

void Display::insertText(const QString &text)
{
    const std::lock_guard lock(m_mutex);
    if (!m_model.app)
        return;
    m_model.text += text;
    ++m_revision;
}

void Display::deleteBackwards()
{
    const std::lock_guard lock(m_mutex);
    const bool pair = m_model.text.size() > 1 && m_model.text.back().isLowSurrogate();
    m_model.text.chop(pair ? 2 : 1);
    ++m_revision;
}

QString Display::text() const
{
    const std::lock_guard lock(m_mutex);
    return m_model.text;
}

void Display::clearText()
{
    const std::lock_guard lock(m_mutex);
    m_model.text.clear();
    ++m_revision;
}

void Display::touch(int action, QPointF at)
{
    const std::lock_guard lock(m_mutex);
    const qint64 now = monotonicMilliseconds();
    dropOldMarks(now);
    if (action == 2 && m_lastDrag) {
        const qreal moved = (m_lastDrag->y() - at.y()) / m_model.scale();
        if (moved != 0) {
            m_model.scroll = qMax(0.0, m_model.scroll + moved);
            ++m_revision;
        }
    }
    m_lastDrag = action == 1 ? std::nullopt : std::optional(at);
    for (TouchMark &mark : m_model.marks)
        mark.isDown = false;
    // An up where the finger already was is the same mark, released.
    if (action == 1 && !m_model.marks.isEmpty() && m_model.marks.last().at == at)
        m_model.marks.last().time = now;
    else
        m_model.marks.append({at, now, action != 1});
}

void Display::scrollBy(qreal dp)
{
    const std::lock_guard lock(m_mutex);
    m_model.scroll = qMax(0.0, m_model.scroll + dp);
    ++m_revision;
}

void Display::dropOldMarks(qint64 now)
{
    QList<TouchMark> &marks = m_model.marks;
    while (!marks.isEmpty() && (marks.size() > markLimit || now - marks.first().time > TouchMark::lastLifetime))
        marks.removeFirst();
    while (marks.size() > 1 && now - marks.first().time > TouchMark::lifetime)
        marks.removeFirst();
}

} // namespace standin
