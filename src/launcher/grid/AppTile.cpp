#include "launcher/grid/AppTile.h"

#include "launcher/grid/AppIcon.h"
#include "look/ContinuousCorners.h"
#include "look/FocusRing.h"
#include "look/Fonts.h"

#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace quillnest
{

namespace
{

constexpr double topMargin = 8;
constexpr double labelGap = 4;
constexpr double labelHeight = 16;
constexpr double dotSize = 4;
constexpr double unreadSize = 10;
constexpr double unreadStroke = 2;
constexpr double failedSize = 15;
constexpr QColor failedColor(0xC9, 0x27, 0x1B);
constexpr double widestGround = 104;

int labelLines(ThemeStyle style)
{
    return style == ThemeStyle::oneui ? 2 : 1;
}

QFont labelFont(ThemeStyle style)
{
    if (style == ThemeStyle::classic) {
        auto font = interfaceFont(11, QFont::Medium);
        // Fonts are set in whole pixels; a touch of narrowness makes 11 look the 10.5 that are wanted.
        font.setStretch(96);
        return font;
    }
    return style == ThemeStyle::pixel ? roundedFont(11) : interfaceFont(11);
}

/// On the outline of an icon, where its corner's diagonal meets it.
double cornerInset(double size, ThemeStyle style)
{
    return AppIcon::radius(size, style) * (1 - std::sqrt(0.5));
}

/// A word in its own direction, whatever the interface's is.
QTextOption centered(QTextOption::WrapMode wrap)
{
    QTextOption option(Qt::AlignHCenter);
    option.setWrapMode(wrap);
    option.setTextDirection(Qt::LayoutDirectionAuto);
    return option;
}

} // namespace

QRectF AppTile::iconArea(const QRectF &tile)
{
    return {std::round(tile.center().x() - iconSize / 2), tile.top() + topMargin, iconSize, iconSize};
}

AppTile::Marks AppTile::marks(const PanelServices &services, QUuid id)
{
    return {
        .launching = services.store.launchingAppID() == id,
        .running = services.store.runningAppIDs().contains(id),
        .unread = services.store.unreadAppIDs().contains(id),
        .locked = services.locks->isLocked(id),
        .failed = services.store.launchFailure(id).has_value()};
}

QString AppTile::toolTip(const PanelServices &services) const
{
    const bool running = services.store.runningAppIDs().contains(m_app.id);
    QStringList lines{QStringLiteral("%1 %2").arg(running ? QStringLiteral("Show") : QStringLiteral("Open"), m_name)};
    if (services.locks->isLocked(m_app.id))
        lines.append(QStringLiteral("Locked: asks who you are before it opens"));
    if (const auto failure = services.store.launchFailure(m_app.id))
        lines.append(QStringLiteral("Did not start last time: %1").arg(*failure));
    return lines.join(u'\n');
}

QString AppTile::spoken(const Marks &marks)
{
    QStringList words;
    if (marks.launching)
        words.append(QStringLiteral("Opening"));
    else if (marks.running)
        words.append(QStringLiteral("Running"));
    if (marks.unread)
        words.append(QStringLiteral("Unread notifications"));
    if (marks.locked)
        words.append(QStringLiteral("Locked"));
    if (marks.failed)
        words.append(QStringLiteral("Did not start last time"));
    return words.join(QStringLiteral(", "));
}

void AppTile::paint(
    QPainter &painter, const QRectF &tile, const QImage &image, const Marks &marks, const Attention &attention,
    const PanelLook &look, const Symbols &symbols) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    // In a wide panel tiles stand far apart, and the ground is still about the size of what is on it.
    const double reach = std::min(tile.width() / 2 - 2, widestGround / 2);
    const QRectF ground(tile.center().x() - reach, tile.top(), 2 * reach, tile.height());
    if (attention.hovered || attention.pressed)
        painter.fillPath(continuousRectangle(ground, 14), attention.pressed ? look.colors.pressed : look.colors.hover);
    if (attention.focused)
        paintFocusRing(painter, ground, 14, look.colors.controlAccent);
    const auto icon = iconArea(tile);
    AppIcon::paint(painter, icon, m_name, image, look.style);
    paintMarks(painter, icon, marks, look, symbols);
    const double lines = labelLines(look.style) * (labelHeight - (labelLines(look.style) > 1 ? 2 : 0));
    paintLabel(painter, QRectF(tile.left() + 4, icon.bottom() + labelGap, tile.width() - 8, lines), look);
    if (marks.running) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QuillnestTheme::jade());
        painter.drawEllipse(QRectF(icon.center().x() - dotSize / 2, tile.bottom() - dotSize - 3, dotSize, dotSize));
    }
}

void AppTile::paintMarks(
    QPainter &painter, const QRectF &icon, const Marks &marks, const PanelLook &look, const Symbols &symbols) const
{
    if (marks.launching)
        painter.fillPath(
            continuousRectangle(icon, AppIcon::radius(icon.width(), look.style)), QColor::fromRgbF(0, 0, 0, 0.35F));
    const double inset = cornerInset(icon.width(), look.style);
    const auto ground = look.hasWallpaper ? QColor(Qt::white) : look.colors.windowBackground;
    if (marks.unread) {
        painter.setPen(QPen(ground, unreadStroke));
        painter.setBrush(QuillnestTheme::ember());
        const double radius = unreadSize / 2;
        painter.drawEllipse(QPointF(icon.right() - inset, icon.top() + inset), radius, radius);
    }
    const auto badge = [&](const QPointF &center, double width) {
        constexpr double height = 14;
        const QRectF area(center.x() - width / 2, center.y() - height / 2, width, height);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(20, 20, 24, 200));
        painter.drawRoundedRect(area, height / 2, height / 2);
        return area;
    };
    if (marks.failed) {
        // Where it hides none of the others.
        const QPointF center(icon.left() + inset, icon.top() + inset);
        painter.setPen(QPen(ground, unreadStroke));
        painter.setBrush(failedColor);
        painter.drawEllipse(center, failedSize / 2, failedSize / 2);
        painter.setPen(QPen(Qt::white, 1.8, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(center - QPointF(0, 3.2), center + QPointF(0, 0.4));
        painter.drawPoint(center + QPointF(0, 3.4));
    }
    if (m_app.platform == MobilePlatform::ios) {
        const auto area = badge(QPointF(icon.right() - inset - 4, icon.bottom() - inset), 24);
        painter.setPen(Qt::white);
        painter.setFont(interfaceFont(8, QFont::Bold));
        painter.drawText(area, Qt::AlignCenter, QStringLiteral("iOS"));
    }
    if (marks.locked) {
        constexpr int side = 8;
        const auto area = badge(QPointF(icon.left() + inset, icon.bottom() - inset), 14);
        painter.drawPixmap(
            area.center() - QPointF(side / 2.0, side / 2.0),
            symbols.pixmap(QStringLiteral("lock.fill"), side, Qt::white, painter.device()->devicePixelRatioF()));
    }
}

void AppTile::paintLabel(QPainter &painter, const QRectF &area, const PanelLook &look) const
{
    const auto font = labelFont(look.style);
    const QFontMetricsF metrics(font);
    painter.setFont(font);
    painter.setPen(look.colors.label);
    if (labelLines(look.style) == 1) {
        painter.drawText(area, metrics.elidedText(m_name, Qt::ElideRight, area.width()), centered(QTextOption::NoWrap));
        return;
    }
    // What doesn't fit two lines ends the second with an ellipsis.
    QTextLayout layout(m_name, font);
    layout.setTextOption(centered(QTextOption::WrapAtWordBoundaryOrAnywhere));
    layout.beginLayout();
    auto first = layout.createLine();
    first.setLineWidth(area.width());
    const auto rest = m_name.mid(first.textLength());
    layout.endLayout();
    const double line = area.height() / 2;
    const QRectF top(area.left(), area.top(), area.width(), line);
    painter.drawText(top, m_name.left(first.textLength()).trimmed(), centered(QTextOption::NoWrap));
    if (!rest.isEmpty())
        painter.drawText(
            top.translated(0, line), metrics.elidedText(rest.trimmed(), Qt::ElideRight, area.width()),
            centered(QTextOption::NoWrap));
}

} // namespace quillnest
