#pragma once

#include <QWidget>

#include <functional>

class QScrollArea;

namespace quillnest
{

/// Lets what scrolls fade into the ground at the lower edge of a scroll area, while there is more below.
class EdgeFade : public QWidget
{
public:
    /// `ground` paints what lies behind the area, in the coordinates of `whole`, an ancestor.
    EdgeFade(QScrollArea &area, QWidget &whole, std::function<void(QPainter &)> ground);

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void place();

    QScrollArea &m_area;
    QWidget &m_whole;
    const std::function<void(QPainter &)> m_ground;
};

} // namespace quillnest
