#pragma once

#include "look/PanelShadow.h"
#include "platform/Platform.h"
#include "windows/WindowDrag.h"

#include <QWidget>

#include <memory>

namespace quillnest
{

/// A frameless window that floats like a panel: resizable at its edges if wanted, rounded and with a shadow where the
/// desktop has a compositor, and able to take the keyboard.
class AndroidAppPanel : public QWidget
{
    Q_OBJECT

public:
    enum class Resizing { fixed, atEdges };

    AndroidAppPanel(const Platform &platform, Resizing resizing);

    /// The window as its user sees it, without its shadow, in points. Where the desktop blends windows the widget is
    /// larger than that by `shadowMargins`, which its layout leaves free.
    QRect frame() const { return geometry().marginsRemoved(shadowMargins()); }
    /// A hidden window tells of its new size as well.
    void setFrame(QRect frame);
    void setMinimumFrameSize(QSize size);
    QMargins shadowMargins() const { return m_isBlended ? PanelShadow::reach : QMargins(); }

    /// Puts back what belongs outside the rounded corners, for a child that paints up to them; in the panel's own
    /// coordinates, as far as the painter's clip allows.
    void paintOutside(QPainter &painter) const;

    /// Lets a drag of whatever takes no press itself move the window.
    void setMovableByBackground(bool on) { m_movableByBackground = on; }

    /// Keeps the window above others, or not.
    void setFloating(bool on);
    bool isFloating() const { return m_floating; }

    /// Shows the window in front of all others and gives it the keyboard.
    void orderFront();
    void orderOut() { hide(); }

Q_SIGNALS:
    /// It has lost the keyboard, or got it.
    void resignedKey();
    void becameKey();
    /// It has been moved while it is on screen.
    void moved();
    /// Its frame has another size. What the desktop rounds a size by is none.
    void resized();
    /// It has come onto the screen, or left it.
    void shown();
    void hidden();
    /// The user asked to close the window; it never closes by itself.
    void closeRequested();

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    Qt::Edges edgesAt(QPointF point) const;
    void showEdgeCursor(Qt::Edges edges);
    void declareShadow();
    void keyStateChanged();
    bool isRounding(QSize size) const;

    const Platform &m_platform;
    const Resizing m_resizing;
    const bool m_isBlended;
    const PanelShadow m_shadow;
    bool m_floating = false;
    bool m_movableByBackground = false;
    WindowDrag m_drag;
    bool m_isKey = false;
    /// Of the frame, as it was asked for or told last.
    QSize m_toldSize;
    std::unique_ptr<Timer> m_grabWatch;
    Qt::Edges m_cursorEdges;
};

} // namespace quillnest
