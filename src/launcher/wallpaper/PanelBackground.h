#pragma once

#include "launcher/PanelLook.h"

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

    /// Fills the part of `area` that the painter's clip leaves, with round corners if `radius` is more than nothing.
    void paint(QPainter &painter, const QRect &area, const PanelLook &look, double radius);
    /// The photo may be another one under the same name.
    void forget() { m_picture = {}; }

private:
    void paintWallpaper(QPainter &painter, const QRect &area, const PanelLook &look, double radius);

    const Platform &m_platform;
    QPixmap m_picture;
    QString m_key;
};

} // namespace quillnest
