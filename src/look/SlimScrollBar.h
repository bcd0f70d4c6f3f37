#pragma once

#include "look/Look.h"

#include <QWidget>

#include <optional>

class QAbstractScrollArea;

namespace quillnest
{

/// A thin thumb at the edge of a scroll area whose own bar is switched off. Takes no room from what scrolls.
class SlimScrollBar : public QWidget
{
    Q_OBJECT

public:
    SlimScrollBar(QAbstractScrollArea &area, const Look &look);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    void place();
    QRectF thumb() const;

    QAbstractScrollArea &m_area;
    const Look &m_look;
    /// Where in the thumb the pointer took it.
    std::optional<double> m_grip;
};

} // namespace quillnest
