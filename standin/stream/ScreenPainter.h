#pragma once

#include "stream/ScreenLayout.h"

#include <QDateTime>

class QPainter;

namespace standin
{

/// Paints a display's picture: what stands still, and what moves. Any thread; needs a QGuiApplication for the fonts.
class ScreenPainter
{
public:
    explicit ScreenPainter(const ScreenModel &model);

    void paintStill(QPainter &painter) const;
    /// The time of day is an argument so that the caller decides what a frame shows.
    void paintMoving(QPainter &painter, const QDateTime &now, qint64 milliseconds) const;
    /// Where paintMoving paints at that time.
    QList<QRect> movingParts(qint64 milliseconds) const;

private:
    void paintCard(QPainter &painter) const;
    void paintChips(QPainter &painter) const;
    void paintField(QPainter &painter) const;
    void paintList(QPainter &painter) const;
    void paintClock(QPainter &painter, const QDateTime &now) const;
    void paintDial(QPainter &painter, qint64 milliseconds) const;
    void paintMarks(QPainter &painter, qint64 milliseconds) const;
    QRectF boundsOfMark(const TouchMark &mark) const;
    QFont font(qreal dp, int weight) const;

    const ScreenModel &m_model;
    const ScreenLayout m_layout;
    QColor m_background;
    QColor m_surface;
    QColor m_ink;
    QColor m_faint;
    QColor m_accent;
};

/// A touch's ring has this colour on every background, so that a picture can be searched for it.
QColor markColour();

} // namespace standin
