#include "launcher/DropOverlay.h"

#include "look/ContinuousCorners.h"
#include "look/Fonts.h"

#include <QPainter>

namespace quillnest
{

namespace
{
constexpr int inset = 8;
constexpr int symbolSize = 48;
} // namespace

DropOverlay::DropOverlay(const PanelLook &look, QWidget *parent) : QWidget(parent), m_look(look)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAccessibleName(QStringLiteral("Drop to add"));
    hide();
}

void DropOverlay::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto accent = m_look.colors.controlAccent;
    auto veil = m_look.colors.windowBackground;
    veil.setAlpha(225);
    auto shine = accent;
    shine.setAlpha(30);
    const auto area = QRectF(rect()).adjusted(inset, inset, -inset, -inset);
    const auto shape = continuousRectangle(area, 14);
    painter.fillPath(shape, veil);
    painter.fillPath(shape, shine);
    QPen pen(accent, 2, Qt::CustomDashLine, Qt::RoundCap);
    pen.setDashPattern({4, 4});
    painter.setPen(pen);
    painter.drawPath(continuousRectangle(area.adjusted(1, 1, -1, -1), 13));
    const auto symbol = m_look.symbol(QStringLiteral("arrow.down.app"), symbolSize, accent, painter);
    const QPointF middle = area.center();
    painter.drawPixmap(middle - QPointF(symbolSize / 2.0, symbolSize + 4), symbol);
    painter.setPen(m_look.colors.label);
    painter.setFont(displayFont(17, QFont::DemiBold));
    painter.drawText(
        QRectF(area.left(), middle.y() + 8, area.width(), 28), Qt::AlignCenter, QStringLiteral("Drop to add"));
}

} // namespace quillnest
