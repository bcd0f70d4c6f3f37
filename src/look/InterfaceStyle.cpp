#include "look/InterfaceStyle.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyleFactory>
#include <QStyleOptionMenuItem>

namespace quillnest
{

namespace
{

constexpr int itemHeight = 26;
constexpr int separatorHeight = 9;
/// Left of an item's text: the tick's place.
constexpr int tickColumn = 28;
constexpr int rightMargin = 18;
constexpr double highlightRadius = 5;

void drawTick(QPainter &painter, QRectF area, const QColor &color)
{
    painter.setPen(QPen(color, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    QPainterPath tick;
    tick.moveTo(area.left(), area.center().y() + 0.5);
    tick.lineTo(area.left() + area.width() * 0.36, area.bottom() - 1);
    tick.lineTo(area.right(), area.top() + 1);
    painter.drawPath(tick);
}

/// What tells that an entry opens another menu.
void drawChevron(QPainter &painter, QPointF center, bool mirrored, const QColor &color)
{
    painter.setPen(QPen(color, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const double tip = mirrored ? -2.5 : 2.5;
    const QPointF points[]{center + QPointF(-tip, -4.5), center + QPointF(tip, 0), center + QPointF(-tip, 4.5)};
    painter.drawPolyline(points, 3);
}

void drawMenuItem(const QStyleOptionMenuItem &item, QPainter &painter)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF row = item.rect;
    const auto &palette = item.palette;
    if (item.menuItemType == QStyleOptionMenuItem::Separator) {
        painter.fillRect(QRectF(row.left() + 10, row.center().y(), row.width() - 20, 1), palette.color(QPalette::Mid));
        painter.restore();
        return;
    }
    const bool enabled = item.state & QStyle::State_Enabled;
    const bool selected = enabled && (item.state & QStyle::State_Selected);
    if (selected) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette.color(QPalette::Highlight));
        painter.drawRoundedRect(row.adjusted(5, 1, -5, -1), highlightRadius, highlightRadius);
    }
    const auto color = selected ? palette.color(QPalette::HighlightedText)
                                : palette.color(enabled ? QPalette::Active : QPalette::Disabled, QPalette::Text);
    const bool mirrored = item.direction == Qt::RightToLeft;
    if (item.checkType != QStyleOptionMenuItem::NotCheckable && item.checked)
        drawTick(painter, QRectF(mirrored ? row.right() - 22 : row.left() + 12, row.center().y() - 5, 10, 10), color);
    if (item.menuItemType == QStyleOptionMenuItem::SubMenu)
        drawChevron(painter, QPointF(mirrored ? row.left() + 12 : row.right() - 12, row.center().y()), mirrored, color);
    painter.setPen(color);
    painter.setFont(item.font);
    // What follows a tab is the item's shortcut.
    const auto parts = item.text.split(QLatin1Char('\t'));
    const auto text
        = mirrored ? row.adjusted(rightMargin, 0, -tickColumn, 0) : row.adjusted(tickColumn, 0, -rightMargin, 0);
    const auto at = [&item](Qt::Alignment side) {
        return static_cast<int>(QStyle::visualAlignment(item.direction, side | Qt::AlignVCenter));
    };
    painter.drawText(text, at(Qt::AlignLeft) | Qt::TextHideMnemonic | Qt::TextSingleLine, parts.value(0));
    if (parts.size() > 1)
        painter.drawText(text, at(Qt::AlignRight) | Qt::TextSingleLine, parts.value(1));
    painter.restore();
}

} // namespace

InterfaceStyle::InterfaceStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) { }

void InterfaceStyle::drawPrimitive(
    PrimitiveElement element, const QStyleOption *option, QPainter *painter, const QWidget *widget) const
{
    if (element == PE_PanelTipLabel || element == PE_PanelMenu || element == PE_FrameMenu) {
        painter->save();
        painter->setPen(option->palette.color(QPalette::Mid));
        painter->setBrush(element == PE_FrameMenu ? QBrush(Qt::NoBrush) : option->palette.base());
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        painter->restore();
        return;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void InterfaceStyle::drawControl(
    ControlElement element, const QStyleOption *option, QPainter *painter, const QWidget *widget) const
{
    const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    if (element == CE_MenuItem && item && item->icon.isNull()) {
        drawMenuItem(*item, *painter);
        return;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

int InterfaceStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    switch (metric) {
    case PM_MenuVMargin:
        return 4;
    case PM_MenuHMargin:
        return 0;
    case PM_ToolTipLabelFrameWidth:
        return 4;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

QSize InterfaceStyle::sizeFromContents(
    ContentsType type, const QStyleOption *option, const QSize &size, const QWidget *widget) const
{
    const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    if (type != CT_MenuItem || !item)
        return QProxyStyle::sizeFromContents(type, option, size, widget);
    const bool isSeparator = item->menuItemType == QStyleOptionMenuItem::Separator;
    const auto text = QFontMetrics(item->font).horizontalAdvance(item->text);
    return {text + tickColumn + rightMargin, isSeparator ? separatorHeight : itemHeight};
}

int InterfaceStyle::styleHint(
    StyleHint hint, const QStyleOption *option, const QWidget *widget, QStyleHintReturn *result) const
{
    // A menu that has run out of room below scrolls; it never gets a second column.
    if (hint == SH_Menu_Scrollable)
        return 1;
    return QProxyStyle::styleHint(hint, option, widget, result);
}

} // namespace quillnest
