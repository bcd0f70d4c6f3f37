#pragma once

#include <QLabel>
#include <QPainter>
#include <QStyle>

namespace quillnest
{

/// A line of text that ends in an ellipsis when its neighbours need the room.
class ElidedLabel : public QLabel
{
public:
    using QLabel::QLabel;

    QSize minimumSizeHint() const override { return {20, QLabel::minimumSizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(
            contentsRect(), QStyle::visualAlignment(layoutDirection(), Qt::AlignVCenter | Qt::AlignLeft),
            fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()));
    }
};

} // namespace quillnest
