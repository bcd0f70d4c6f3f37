#pragma once

#include "device/ScreenModel.h"

#include <QJsonArray>
#include <mutex>

namespace standin
{

/// One display and what the app on it has been given: text, touches, scrolling. Thread safe.
class Display
{
public:
    Display(int id, QSize size, int dpi, bool night);

    int id() const { return m_id; }
    ScreenModel model() const;
    /// Goes up with every change that needs more than the moving parts of the picture drawn anew.
    quint64 revision() const;

    void resize(QSize size);
    void setNight(bool night);
    void setApp(const std::optional<AppLook> &app);
    void setDepth(int depth);

    void insertText(const QString &text);
    void deleteBackwards();
    QString text() const;
    void clearText();

    /// `action` is 0 down, 1 up, 2 move; the point is in the display's pixels.
    void touch(int action, QPointF at);
    void scrollBy(qreal dp);

private:
    void dropOldMarks(qint64 now);

    const int m_id;
    mutable std::mutex m_mutex;
    ScreenModel m_model;
    quint64 m_revision = 1;
    std::optional<QPointF> m_lastDrag;
};

/// Milliseconds of a clock that only goes forwards.
qint64 monotonicMilliseconds();

} // namespace standin
