#pragma once

#include "look/Control.h"

namespace quillnest
{

/// One part of a segmented control.
class Segment : public Control
{
    Q_OBJECT

public:
    /// With a symbol above the title unless that is empty.
    Segment(const Look &look, const QString &title, const QString &symbol, QWidget *parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// A key that goes to another segment was pressed: left, right, Home or End.
    void leftBy(int key);

protected:
    void paint(QPainter &painter) override;
    Ring ring() const override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    const QString m_symbol;
};

} // namespace quillnest
