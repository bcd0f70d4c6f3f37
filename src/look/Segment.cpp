#include "look/Segment.h"

#include "look/Fonts.h"
#include "look/KitAccess.h"

#include <QKeyEvent>
#include <QPainter>

namespace quillnest
{

namespace
{
constexpr int plainHeight = 26;
constexpr int symbolHeight = 44;
constexpr int symbolSize = 18;
constexpr int margin = 10;
constexpr int leastMargin = 3;
constexpr double radius = 6;
} // namespace

Segment::Segment(const Look &look, const QString &title, const QString &symbol, QWidget *parent)
    : Control(look, title, parent), m_symbol(symbol)
{
    installKitAccess();
    setCheckable(true);
    setFont(interfaceFont(symbol.isEmpty() ? 12 : 11, QFont::Medium));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize Segment::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(name()) + 2 * margin, m_symbol.isEmpty() ? plainHeight : symbolHeight};
}

QSize Segment::minimumSizeHint() const
{
    return {fontMetrics().horizontalAdvance(name()) + 2 * leastMargin, sizeHint().height()};
}

Control::Ring Segment::ring() const
{
    return {rect(), radius, look().colors.controlAccent};
}

void Segment::paint(QPainter &painter)
{
    const auto &colors = look().colors;
    const auto area = QRectF(rect());
    if (isChecked()) {
        painter.setPen(QPen(colors.separator, 1));
        painter.setBrush(look().isDark ? QColor(255, 255, 255, 48) : QColor(0xFFFFFF));
        painter.drawRoundedRect(area.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    } else {
        paintWash(painter, area, radius);
    }
    const auto color = isChecked() ? colors.label : colors.secondaryLabel;
    auto words = area;
    if (!m_symbol.isEmpty()) {
        const auto tint = isChecked() ? colors.controlAccent : colors.secondaryLabel;
        painter.drawPixmap(QPointF((width() - symbolSize) / 2, 5), look().symbol(m_symbol, symbolSize, tint, painter));
        words.setTop(5 + symbolSize);
    }
    painter.setPen(color);
    painter.drawText(
        words, Qt::AlignCenter | Qt::TextSingleLine,
        painter.fontMetrics().elidedText(name(), Qt::ElideRight, width() - 2 * leastMargin + 2));
}

void Segment::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Home:
    case Qt::Key_End:
        Q_EMIT leftBy(event->key());
        return;
    default:
        Control::keyPressEvent(event);
    }
}

} // namespace quillnest
