#pragma once

#include <QImage>
#include <QWidget>

namespace quillnest
{

/// One lower corner of a rounded window, above all that is laid into the window: whatever was painted there is cut off,
/// and the window's shadow shows. So nothing else in the window needs to know of its corners. It lets the mouse
/// through.
class WindowCorner : public QWidget
{
    Q_OBJECT

public:
    enum class Side { left, right };

    WindowCorner(Side side, QWidget *parent);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    /// The window's shadow in this corner.
    QImage shadow() const;

    const Side m_side;
    /// The same for all sizes of a window, so it is painted once for each scale.
    QImage m_shadow;
};

} // namespace quillnest
