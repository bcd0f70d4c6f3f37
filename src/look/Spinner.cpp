#include "look/Spinner.h"

#include <QPainter>

#include <cmath>

namespace quillnest
{

Spinner::Spinner(const Look &look, int size, QWidget *parent) : QWidget(parent), m_look(look)
{
    setFixedSize(size, size);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAccessibleName(QStringLiteral("In progress"));
}

void Spinner::setColor(const QColor &color)
{
    m_color = color;
    update();
}

void Spinner::showEvent(QShowEvent *)
{
    m_timer = m_look.platform->clock->every(std::chrono::milliseconds(33), [this] { update(); });
}

void Spinner::hideEvent(QHideEvent *)
{
    m_timer.reset();
}

void Spinner::paintEvent(QPaintEvent *)
{
    const auto color = m_color.isValid() ? m_color : m_look.colors.secondaryLabel;
    // The angle follows from the time, so that a late frame doesn't slow the turning down.
    const double turns = std::chrono::duration<double>(m_look.platform->clock->monotonic()).count() / 0.9;
    const double start = 360 * (turns - std::floor(turns));
    const double thickness = std::max(1.5, width() / 9.0);
    const auto ring = QRectF(rect()).adjusted(thickness, thickness, -thickness, -thickness);

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    auto track = color;
    track.setAlphaF(0.2F * color.alphaF());
    painter.setPen(QPen(track, thickness));
    painter.drawEllipse(ring);
    painter.setPen(QPen(color, thickness, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(ring, static_cast<int>(std::lround(-16 * start)), 16 * 100);
}

} // namespace quillnest
