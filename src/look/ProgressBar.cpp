#include "look/ProgressBar.h"

#include "look/Control.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace quillnest
{

namespace
{
constexpr int steps = 1000;
}

ProgressBar::ProgressBar(const Look &look, QWidget *parent) : QProgressBar(parent), m_look(look)
{
    setRange(0, steps);
    setTextVisible(false);
    setFixedHeight(6);
}

void ProgressBar::setFraction(double fraction)
{
    setValue(static_cast<int>(std::lround(steps * std::clamp(fraction, 0.0, 1.0))));
}

void ProgressBar::paintEvent(QPaintEvent *)
{
    const auto &colors = m_look.colors;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    const QRectF whole(rect());
    const double radius = whole.height() / 2;
    painter.setBrush(colors.pressed);
    painter.drawRoundedRect(whole, radius, radius);
    if (value() <= 0)
        return;
    painter.setBrush(colors.controlAccent);
    const double filled = std::max(whole.height(), whole.width() * value() / steps);
    const double left = isRightToLeft() ? whole.width() - filled : 0;
    painter.drawRoundedRect(QRectF(left, 0, filled, whole.height()), radius, radius);
}

} // namespace quillnest
