#include "look/Control.h"

#include "look/FocusRing.h"

#include <QKeyEvent>
#include <QPainter>

namespace quillnest
{

namespace
{
constexpr double ringRadius = 8;
} // namespace

Control::Control(const Look &look, const QString &name, QWidget *parent) : QAbstractButton(parent), m_look(look)
{
    // Painted anew when the pointer comes and goes.
    setAttribute(Qt::WA_Hover);
    setName(name);
}

void Control::setName(const QString &name)
{
    m_name = name;
    setAccessibleName(name);
    updateGeometry();
    update();
}

Control::Ring Control::ring() const
{
    return {rect(), ringRadius, m_look.colors.controlAccent};
}

void Control::paintWash(QPainter &painter, const QRectF &area, double radius) const
{
    if (!isDown() && !isHovered())
        return;
    painter.setPen(Qt::NoPen);
    painter.setBrush(isDown() ? m_look.colors.pressed : m_look.colors.hover);
    painter.drawRoundedRect(area, radius, radius);
}

void Control::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(font());
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    paint(painter);
    if (!hasFocus())
        return;
    const auto shown = ring();
    paintFocusRing(painter, shown.area, shown.radius, shown.color);
}

void Control::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        QAbstractButton::keyPressEvent(event);
        return;
    }
    // A key that is held down presses once.
    if (!event->isAutoRepeat())
        click();
}

} // namespace quillnest
