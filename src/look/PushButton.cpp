#include "look/PushButton.h"

#include "look/Fonts.h"
#include "look/Palette.h"

#include <QKeyEvent>
#include <QPainter>

namespace quillnest
{

namespace
{
constexpr int buttonHeight = 30;
constexpr int margin = 14;
} // namespace

PushButton::PushButton(const Platform &platform, const QString &title, Kind kind, QWidget *parent)
    : QAbstractButton(parent), m_platform(platform), m_title(title), m_kind(kind)
{
    setFont(interfaceFont(13, kind == Kind::prominent ? QFont::DemiBold : QFont::Medium));
    setAccessibleName(title);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize PushButton::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(m_title) + 2 * margin, buttonHeight};
}

void PushButton::paintEvent(QPaintEvent *)
{
    const auto palette = Palette::current(m_platform);
    const bool prominent = m_kind == Kind::prominent;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isEnabled() ? 1 : 0.4);
    const auto area = QRectF(rect()).adjusted(1, 1, -1, -1);

    QColor ground = prominent ? palette.controlAccent : palette.field;
    if (prominent && (isDown() || m_hovered))
        ground = isDown() ? ground.darker(118) : ground.lighter(108);
    painter.setPen(prominent ? QPen(Qt::NoPen) : QPen(palette.separator, 1));
    painter.setBrush(ground);
    painter.drawRoundedRect(area.adjusted(0.5, 0.5, -0.5, -0.5), 7, 7);
    if (!prominent && (isDown() || m_hovered)) {
        painter.setBrush(isDown() ? palette.pressed : palette.hover);
        painter.drawRoundedRect(area.adjusted(0.5, 0.5, -0.5, -0.5), 7, 7);
    }
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(prominent ? palette.label : palette.controlAccent, 2));
        painter.drawRoundedRect(area, 7.5, 7.5);
    }
    painter.setPen(prominent ? QColor(Qt::white) : palette.label);
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextSingleLine, m_title);
}

void PushButton::enterEvent(QEnterEvent *)
{
    m_hovered = true;
    update();
}

void PushButton::leaveEvent(QEvent *)
{
    m_hovered = false;
    update();
}

void PushButton::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

} // namespace quillnest
