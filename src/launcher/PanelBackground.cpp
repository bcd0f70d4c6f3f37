#include "launcher/PanelBackground.h"

#include "base/QuillnestSettings.h"
#include "launcher/WallpaperView.h"

#include <cmath>

namespace quillnest
{

void PanelBackground::paint(QPainter &painter, const QRect &area, const PanelLook &look, double radius)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QBrush brush(look.colors.windowBackground);
    if (look.hasWallpaper) {
        const auto id = Wallpaper::selected(m_platform);
        const double scale = painter.deviceTransform().m11();
        const auto pixels = (QSizeF(area.size()) * scale).toSize();
        const auto key = QStringLiteral("%1 %2 %3x%4 %5")
                             .arg(id)
                             .arg(QuillnestSettings::integer(*m_platform.settings, Wallpaper::revisionKey()))
                             .arg(pixels.width())
                             .arg(pixels.height())
                             .arg(look.isDark);
        if (m_picture.isNull() || m_key != key) {
            const auto material = look.isDark ? WallpaperView::Material{QColor(0x1C1C20), 0.42F}
                                              : WallpaperView::Material{QColor(0xFAFAFC), 0.66F};
            m_picture = QPixmap::fromImage(WallpaperView::render(m_platform, id, pixels, material));
            m_key = key;
        }
        brush = QBrush(m_picture);
        brush.setTransform(QTransform::fromScale(1 / scale, 1 / scale) * QTransform::fromTranslate(area.x(), area.y()));
    }
    if (radius > 0) {
        painter.setBrush(brush);
        painter.drawRoundedRect(QRectF(area), radius, radius);
    } else {
        painter.fillRect(area, brush);
    }
}

} // namespace quillnest
