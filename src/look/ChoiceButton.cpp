#include "look/ChoiceButton.h"

#include "look/Fonts.h"

#include <QPainter>

namespace quillnest
{

ChoiceButton::ChoiceButton(const Look &look, const QString &name, Sample sample, QWidget *parent)
    : Control(look, name, parent), m_sample(std::move(sample))
{
    setCheckable(true);
    setAutoExclusive(true);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ChoiceButton::paint(QPainter &painter)
{
    const auto &colors = look().colors;
    const auto sample = QRectF(rect()).adjusted(6, 6, -6, -24);
    m_sample(painter, sample);
    if (isChecked() || isHovered() || isDown()) {
        // The chosen one's ring lies on its sample alone, the keyboard's around the name as well.
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(isChecked() ? colors.controlAccent : colors.tertiaryLabel, isChecked() ? 2 : 1));
        painter.drawRoundedRect(sample.adjusted(-1, -1, 1, 1), 10, 10);
    }
    if (isChecked())
        paintTick(painter, sample.bottomRight() - QPointF(6, 6));
    auto font = interfaceFont(11, isChecked() ? QFont::DemiBold : QFont::Normal);
    const double room = width() - 6;
    if (QFontMetrics(font).horizontalAdvance(name()) > room)
        font.setStretch(90);
    painter.setFont(font);
    painter.setPen(isChecked() ? colors.label : colors.secondaryLabel);
    const QRectF text(3, height() - 20, room, 16);
    painter.drawText(
        text, Qt::AlignCenter, painter.fontMetrics().elidedText(name(), Qt::ElideRight, static_cast<int>(room)));
}

void ChoiceButton::paintTick(QPainter &painter, QPointF center) const
{
    constexpr double radius = 7;
    painter.setPen(QPen(Qt::white, 1));
    painter.setBrush(look().colors.controlAccent);
    painter.drawEllipse(center, radius, radius);
    painter.setPen(QPen(Qt::white, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const QPointF points[]{center + QPointF(-3, 0.2), center + QPointF(-0.9, 2.4), center + QPointF(3.2, -2.2)};
    painter.drawPolyline(points, 3);
}

} // namespace quillnest
