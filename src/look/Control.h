#pragma once

#include "look/Look.h"

#include <QAbstractButton>

namespace quillnest
{

/// How opaque what a disabled control shows is.
constexpr double disabledOpacity = 0.4;

/// What every control of the kit that can be pressed has in common: it knows whether the pointer is on it, shows where
/// the keyboard is, takes Return as well as Space, tells screen readers its name, and is thinned while it is disabled.
class Control : public QAbstractButton
{
    Q_OBJECT

public:
    /// `name` is what the control says of itself, on screen or to screen readers. `look` outlives the control.
    Control(const Look &look, const QString &name, QWidget *parent);

    /// Not the toolkit's own text, in which an ampersand would mark a key.
    const QString &name() const { return m_name; }
    void setName(const QString &name);

protected:
    struct Ring {
        QRectF area;
        double radius = 0;
        QColor color;
    };

    const Look &look() const { return m_look; }
    bool isHovered() const { return isEnabled() && underMouse(); }
    bool isMirrored() const { return layoutDirection() == Qt::RightToLeft; }

    /// Paints the control in its state, but for the ring.
    virtual void paint(QPainter &painter) = 0;
    /// The ring while the control has the keyboard: around all of it unless told otherwise.
    virtual Ring ring() const;

    /// The soft ground under the pointer or a press; nothing without either.
    void paintWash(QPainter &painter, const QRectF &area, double radius) const;

    void paintEvent(QPaintEvent *event) final;
    void keyPressEvent(QKeyEvent *event) override;

private:
    const Look &m_look;
    QString m_name;
};

} // namespace quillnest
