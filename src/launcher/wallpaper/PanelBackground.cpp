#include "launcher/wallpaper/PanelBackground.h"

#include "launcher/LauncherSettings.h"

#include <cmath>

namespace quillnest
{

namespace
{

QImage rounded(const QImage &image, double radius)
{
    QImage result(image.size(), QImage::Format_ARGB32_Premultiplied);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QBrush(image));
    painter.drawRoundedRect(QRectF(image.rect()), radius, radius);
    return result;
}

} // namespace

void PanelBackground::paint(QPainter &painter, const QRect &area, const PanelLook &look, double radius)
{
    // A photo may be gone, or end in the middle, when it is to be shown.
    if (look.hasWallpaper && paintWallpaper(painter, area, look, radius))
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.colors.windowBackground);
    if (radius > 0)
        painter.drawRoundedRect(QRectF(area), radius, radius);
    else
        painter.drawRect(area);
}

WallpaperView::Material PanelBackground::material(const PanelLook &look)
{
    return look.isDark ? WallpaperView::Material{QColor(0x1C1C20), 0.42F}
                       : WallpaperView::Material{QColor(0xFAFAFC), 0.66F};
}

bool PanelBackground::paintWallpaper(QPainter &painter, const QRect &area, const PanelLook &look, double radius)
{
    const auto id = Wallpaper::selected(m_platform);
    const double scale = painter.deviceTransform().m11();
    const auto pixels = (QSizeF(area.size()) * scale).toSize();
    const auto key = QStringLiteral("%1 %2 %3x%4 %5 %6")
                         .arg(id)
                         .arg(LauncherSettings::wallpaperRevision.value(*m_platform.settings))
                         .arg(pixels.width())
                         .arg(pixels.height())
                         .arg(look.isDark)
                         .arg(radius);
    if (m_key != key) {
        auto image = WallpaperView::render(m_platform, id, pixels, material(look));
        // The corners are cut once, so that a frame is no more than a copy.
        if (radius > 0 && !image.isNull())
            image = rounded(image, radius * scale);
        m_picture = QPixmap::fromImage(std::move(image));
        m_picture.setDevicePixelRatio(scale);
        m_key = key;
    }
    if (m_picture.isNull())
        return false;
    painter.drawPixmap(area.topLeft(), m_picture);
    return true;
}

} // namespace quillnest
