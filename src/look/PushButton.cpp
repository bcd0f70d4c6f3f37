#include "look/PushButton.h"

#include "look/Fonts.h"

#include <QPainter>

namespace quillnest
{

namespace
{
constexpr int buttonHeight = 30;
constexpr int margin = 14;
constexpr double radius = 7;
} // namespace

PushButton::PushButton(const Look &look, const QString &title, Kind kind, QWidget *parent)
    : Control(look, title, parent), m_kind(kind)
{
    setFont(interfaceFont(13, kind == Kind::prominent ? QFont::DemiBold : QFont::Medium));
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize PushButton::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(name()) + 2 * margin, buttonHeight};
}

Control::Ring PushButton::ring() const
{
    // On its own colour the accent couldn't be seen.
    const auto &colors = look().colors;
    return {rect(), radius + 1.5, m_kind == Kind::prominent ? colors.label : colors.controlAccent};
}

void PushButton::paint(QPainter &painter)
{
    const auto &colors = look().colors;
    const auto area = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
    if (m_kind == Kind::prominent) {
        auto ground = colors.controlAccent;
        if (isDown() || isHovered())
            ground = isDown() ? ground.darker(118) : ground.lighter(108);
        painter.setPen(Qt::NoPen);
        painter.setBrush(ground);
        painter.drawRoundedRect(area, radius, radius);
        painter.setPen(Qt::white);
    } else {
        painter.setPen(QPen(colors.separator, 1));
        painter.setBrush(colors.field);
        painter.drawRoundedRect(area, radius, radius);
        paintWash(painter, area, radius);
        painter.setPen(m_kind == Kind::destructive ? colors.destructive : colors.label);
    }
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextSingleLine, name());
}

} // namespace quillnest
