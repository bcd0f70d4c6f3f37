#include "look/SymbolButton.h"

#include "look/PlainWords.h"

#include <QPainter>

namespace quillnest
{

SymbolButton::SymbolButton(const Look &look, const QString &symbol, const QString &name, QWidget *parent)
    : SymbolButton(look, symbol, name, Form(), parent)
{
}

SymbolButton::SymbolButton(
    const Look &look, const QString &symbol, const QString &name, const Form &form, QWidget *parent)
    : Control(look, name, parent), m_form(form), m_symbol(symbol)
{
    setToolTip(plainToolTip(name));
    setFixedSize(form.size);
    // Tab reaches it; a click leaves the keyboard with the app.
    setFocusPolicy(Qt::TabFocus);
}

void SymbolButton::setSymbol(const QString &symbol, bool accented)
{
    if (m_symbol == symbol && m_accented == accented)
        return;
    m_symbol = symbol;
    m_accented = accented;
    update();
}

void SymbolButton::setSymbolSize(int points)
{
    m_form.symbol = points;
    update();
}

QRectF SymbolButton::ground() const
{
    const QSizeF room = size() - m_form.ground;
    return {QPointF(room.width() / 2, room.height() / 2), m_form.ground};
}

Control::Ring SymbolButton::ring() const
{
    return {ground(), m_form.radius, look().colors.controlAccent};
}

void SymbolButton::paint(QPainter &painter)
{
    const auto &colors = look().colors;
    paintWash(painter, ground(), m_form.radius);
    const auto color = m_accented ? colors.controlAccent
        : isHovered() || isDown() ? colors.label
                                  : colors.secondaryLabel;
    const auto symbol = look().symbol(m_symbol, m_form.symbol, color, painter);
    painter.drawPixmap(QPointF((width() - m_form.symbol) / 2, (height() - m_form.symbol) / 2), symbol);
}

} // namespace quillnest
