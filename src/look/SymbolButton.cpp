#include "look/SymbolButton.h"

#include "look/Palette.h"

#include <QPainter>

namespace quillnest
{

SymbolButton::SymbolButton(const Platform &platform, const QString &symbol, const QString &name, QWidget *parent)
    : QAbstractButton(parent), m_platform(platform), m_symbol(symbol)
{
    setAccessibleName(name);
    setToolTip(name);
    setFixedSize(sizeHint());
    // Tab reaches it; a click leaves the keyboard with the app.
    setFocusPolicy(Qt::TabFocus);
}

void SymbolButton::setSymbol(const QString &symbol, bool accented)
{
    m_symbol = symbol;
    m_accented = accented;
    update();
}

void SymbolButton::paintEvent(QPaintEvent *)
{
    const auto palette = Palette::current(m_platform);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto area = QRectF(rect()).adjusted(0, 3, 0, -3);
    if (isEnabled() && (isDown() || m_hovered)) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(isDown() ? palette.pressed : palette.hover);
        painter.drawRoundedRect(area, 5, 5);
    }
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(palette.controlAccent, 2));
        painter.drawRoundedRect(area.adjusted(1, 1, -1, -1), 5, 5);
    }
    constexpr int points = 16;
    const auto color = m_accented ? palette.controlAccent : m_hovered ? palette.label : palette.secondaryLabel;
    const auto pixmap = m_platform.symbols->pixmap(m_symbol, points, color, devicePixelRatioF());
    painter.setOpacity(isEnabled() ? 1.0 : 0.35);
    painter.drawPixmap((width() - points) / 2, (height() - points) / 2, pixmap);
}

void SymbolButton::enterEvent(QEnterEvent *)
{
    m_hovered = true;
    update();
}

void SymbolButton::leaveEvent(QEvent *)
{
    m_hovered = false;
    update();
}

} // namespace quillnest
