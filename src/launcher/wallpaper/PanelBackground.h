#pragma once

#include "launcher/PanelLook.h"
#include "launcher/wallpaper/WallpaperView.h"

#include <QPainter>
#include <QPixmap>

namespace quillnest
{

/// What a panel stands on: the window's colour, or the wallpaper behind frosted glass, which is worked out once for
/// each size and look.
class PanelBackground
{
public:
    explicit PanelBackground(const Platform &platform) : m_platform(platform) { }

    /// The frosted glass that lies on a panel's wallpaper.
    static WallpaperView::Material material(const PanelLook &look);

    /// Fills the part of `area` that the painter's clip leaves, with round corners if `radius` is more than nothing.
    void paint(QPainter &painter, const QRect &area, const PanelLook &look, double radius);
    /// The photo may be another one under the same name.
    void forget() { m_key.clear(); }

private:
    /// False if there is none.
    bool paintWallpaper(QPainter &painter, const QRect &area, const PanelLook &look, double radius);

    const Platform &m_platform;
    QPixmap m_picture;
    QString m_key;
};

} // namespace quillnest
