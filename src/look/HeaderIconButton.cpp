#include "look/HeaderIconButton.h"

#include <QKeyEvent>
#include <QPainter>

namespace quillnest
{

HeaderIconButton::HeaderIconButton(
    const Platform &platform, const Look &look, const QString &symbol, const QString &help, QWidget *parent)
    : QAbstractButton(parent), m_platform(platform), m_look(look), m_symbol(symbol)
{
    setAccessibleName(help);
    setToolTip(help);
    setFixedSize(side, side);
    setFocusPolicy(Qt::TabFocus);
}

void HeaderIconButton::setSymbol(const QString &symbol)
{
    if (m_symbol == symbol)
        return;
    m_symbol = symbol;
    update();
}

void HeaderIconButton::paintEvent(QPaintEvent *)
{
    const auto &colors = m_look.colors;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    if (m_hovering || isDown()) {
        painter.setBrush(isDown() ? colors.pressed : colors.hover);
        painter.drawRoundedRect(rect(), 8, 8);
    }
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colors.controlAccent, 2));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 7, 7);
    }
    const auto color = m_hovering || isDown() ? colors.label : colors.secondaryLabel;
    const auto symbol = m_platform.symbols->pixmap(m_symbol, m_points, color, painter.deviceTransform().m11());
    painter.drawPixmap(QPointF((width() - m_points) / 2, (height() - m_points) / 2), symbol);
}

void HeaderIconButton::enterEvent(QEnterEvent *)
{
    m_hovering = true;
    update();
}

void HeaderIconButton::leaveEvent(QEvent *)
{
    m_hovering = false;
    update();
}

void HeaderIconButton::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

} // namespace quillnest
