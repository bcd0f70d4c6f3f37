#include "platform/desktop/ThemeSymbols.h"

#include <QFile>
#include <QHash>
#include <QPainter>
#include <QPixmapCache>
#include <QStandardPaths>
#include <QSvgRenderer>

#include <cmath>

namespace quillnest
{

namespace
{

/// The theme's file for each symbol, below "icons/Adwaita", without the ending.
QString themeFile(const QString &name)
{
    static const QHash<QString, QString> files{
        {QStringLiteral("square.grid.2x2"), QStringLiteral("actions/view-app-grid-symbolic")},
        {QStringLiteral("chevron.left"), QStringLiteral("actions/go-previous-symbolic")},
        {QStringLiteral("chevron.backward"), QStringLiteral("actions/go-previous-symbolic")},
        {QStringLiteral("arrow.uturn.backward"), QStringLiteral("actions/edit-undo-symbolic")},
        {QStringLiteral("camera"), QStringLiteral("devices/camera-photo-symbolic")},
        {QStringLiteral("bell"), QStringLiteral("legacy/preferences-system-notifications-symbolic")},
        {QStringLiteral("aspectratio"), QStringLiteral("actions/view-fullscreen-symbolic")},
        {QStringLiteral("pin"), QStringLiteral("actions/view-pin-symbolic")},
        {QStringLiteral("pin.fill"), QStringLiteral("actions/view-pin-symbolic")},
        {QStringLiteral("minus"), QStringLiteral("actions/list-remove-symbolic")},
        {QStringLiteral("xmark"), QStringLiteral("ui/window-close-symbolic")},
        {QStringLiteral("magnifyingglass"), QStringLiteral("actions/system-search-symbolic")},
    };
    const auto file = files.value(name);
    if (file.isEmpty())
        return {};
    return QStandardPaths::locate(
        QStandardPaths::GenericDataLocation, QStringLiteral("icons/Adwaita/scalable/%1.svg").arg(file));
}

} // namespace

QPixmap ThemeSymbols::pixmap(const QString &name, int points, const QColor &color, double scale) const
{
    // Buttons ask at every paint; the theme's file is read and drawn once for each look.
    const auto key = QStringLiteral("symbol %1 %2 %3 %4").arg(name).arg(points).arg(color.rgba(), 0, 16).arg(scale);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    const auto path = themeFile(name);
    if (path.isEmpty())
        return {};
    QSvgRenderer renderer(path);
    const int pixels = static_cast<int>(std::lround(points * scale));
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter, QRectF(0, 0, pixels, pixels));
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
