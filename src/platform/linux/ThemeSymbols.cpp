#include "platform/linux/ThemeSymbols.h"

#include <QFile>
#include <QHash>
#include <QPainter>
#include <QPixmapCache>
#include <QStandardPaths>
#include <QSvgRenderer>

#include <array>
#include <cmath>

namespace quillnest
{

namespace
{

/// What stands around a shape of the theme's, which has few that are enclosed.
enum class Frame {
    none,
    /// A ring; a disc with the shape cut out of it; the outline of an app's icon.
    circle,
    disc,
    app,
    /// No shape of the theme's at all, whose lightning is lost in a disc.
    bolt,
};

struct Shape {
    /// Below "icons/Adwaita/scalable", without the ending.
    QString file;
    Frame frame = Frame::none;
};

Shape shapeOf(const QString &name)
{
    static const QHash<QString, Shape> shapes{
        {QStringLiteral("square.grid.2x2"), {QStringLiteral("actions/view-app-grid-symbolic")}},
        {QStringLiteral("chevron.left"), {QStringLiteral("actions/go-previous-symbolic")}},
        {QStringLiteral("chevron.backward"), {QStringLiteral("actions/go-previous-symbolic")}},
        {QStringLiteral("arrow.uturn.backward"), {QStringLiteral("actions/edit-undo-symbolic")}},
        {QStringLiteral("camera"), {QStringLiteral("devices/camera-photo-symbolic")}},
        {QStringLiteral("bell"), {QStringLiteral("legacy/preferences-system-notifications-symbolic")}},
        {QStringLiteral("aspectratio"), {QStringLiteral("actions/view-fullscreen-symbolic")}},
        {QStringLiteral("pin"), {QStringLiteral("actions/view-pin-symbolic")}},
        {QStringLiteral("pin.fill"), {QStringLiteral("actions/view-pin-symbolic")}},
        {QStringLiteral("minus"), {QStringLiteral("actions/list-remove-symbolic")}},
        {QStringLiteral("plus"), {QStringLiteral("actions/list-add-symbolic")}},
        {QStringLiteral("ellipsis"), {QStringLiteral("actions/view-more-horizontal-symbolic")}},
        {QStringLiteral("xmark"), {QStringLiteral("ui/window-close-symbolic")}},
        {QStringLiteral("xmark.circle.fill"), {QStringLiteral("ui/window-close-symbolic"), Frame::disc}},
        {QStringLiteral("magnifyingglass"), {QStringLiteral("actions/system-search-symbolic")}},
        {QStringLiteral("arrow.down.app"), {QStringLiteral("actions/go-down-symbolic"), Frame::app}},
        {QStringLiteral("arrow.down.circle"), {QStringLiteral("actions/go-down-symbolic"), Frame::circle}},
        {QStringLiteral("arrow.down.circle.fill"), {QStringLiteral("actions/go-down-symbolic"), Frame::disc}},
        {QStringLiteral("bolt.fill"), {QStringLiteral("devices/thunderbolt-symbolic"), Frame::bolt}},
        {QStringLiteral("moon.zzz.fill"), {QStringLiteral("status/weather-clear-night-symbolic")}},
        {QStringLiteral("play.fill"), {QStringLiteral("actions/media-playback-start-symbolic")}},
        {QStringLiteral("pause.fill"), {QStringLiteral("actions/media-playback-pause-symbolic")}},
        {QStringLiteral("forward.fill"), {QStringLiteral("actions/media-skip-forward-symbolic")}},
        {QStringLiteral("lock.fill"), {QStringLiteral("status/system-lock-screen-symbolic")}},
        {QStringLiteral("shippingbox.and.arrow.backward"), {QStringLiteral("mimetypes/package-x-generic-symbolic")}},
        {QStringLiteral("checkmark"), {QStringLiteral("actions/object-select-symbolic")}},
        {QStringLiteral("checkmark.circle.fill"), {QStringLiteral("actions/object-select-symbolic"), Frame::disc}},
        {QStringLiteral("photo"), {QStringLiteral("mimetypes/image-x-generic-symbolic")}},
        {QStringLiteral("gearshape"), {QStringLiteral("emblems/emblem-system-symbolic")}},
    };
    return shapes.value(name);
}

QString themeFile(const QString &file)
{
    if (file.isEmpty())
        return {};
    return QStandardPaths::locate(
        QStandardPaths::GenericDataLocation, QStringLiteral("icons/Adwaita/scalable/%1.svg").arg(file));
}

/// Draws a symbol in black on nothing.
void draw(QPainter &painter, QSvgRenderer &shape, Frame frame, double side)
{
    painter.setRenderHint(QPainter::Antialiasing);
    // Of the 16 units that the theme draws on.
    const double unit = side / 16;
    const QRectF whole(0, 0, side, side);
    switch (frame) {
    case Frame::none:
        shape.render(&painter, whole);
        return;
    case Frame::circle:
        painter.setPen(QPen(Qt::black, 1.4 * unit));
        painter.drawEllipse(whole.marginsRemoved(QMarginsF(unit, unit, unit, unit)));
        break;
    case Frame::disc:
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::black);
        painter.drawEllipse(whole.marginsRemoved(QMarginsF(unit, unit, unit, unit) * 0.5));
        painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
        break;
    case Frame::bolt: {
        constexpr std::array<QPointF, 6> corners{
            {{9.6, 1.2}, {3.4, 9.2}, {7.4, 9.2}, {6.2, 14.8}, {12.6, 6.6}, {8.5, 6.6}}};
        painter.scale(unit, unit);
        painter.setPen(QPen(Qt::black, 0.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(Qt::black);
        painter.drawPolygon(corners.data(), corners.size());
        painter.resetTransform();
        return;
    }
    case Frame::app:
        painter.setPen(QPen(Qt::black, 1.2 * unit));
        painter.drawRoundedRect(whole.marginsRemoved(QMarginsF(unit, unit, unit, unit)), 3.6 * unit, 3.6 * unit);
        break;
    }
    const double inset = 3.75 * unit;
    shape.render(&painter, whole.marginsRemoved(QMarginsF(inset, inset, inset, inset)));
}

} // namespace

QPixmap ThemeSymbols::pixmap(const QString &name, int points, const QColor &color, double scale) const
{
    // Buttons ask at every paint; the theme's file is read and drawn once for each look.
    const auto key = QStringLiteral("symbol %1 %2 %3 %4").arg(name).arg(points).arg(color.rgba(), 0, 16).arg(scale);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    const auto drawn = shapeOf(name);
    const auto path = themeFile(drawn.file);
    if (path.isEmpty())
        return {};
    QSvgRenderer renderer(path);
    const int pixels = static_cast<int>(std::lround(points * scale));
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    draw(painter, renderer, drawn.frame, pixels);
    // The theme draws in a dark grey; what counts is its shape.
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    painter.end();
    pixmap = QPixmap::fromImage(image);
    pixmap.setDevicePixelRatio(scale);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

} // namespace quillnest
