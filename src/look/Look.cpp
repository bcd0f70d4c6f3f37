#include "look/Look.h"

#include "platform/Appearance.h"

#include <QPainter>

namespace quillnest
{

Look Look::current(const Platform &platform)
{
    return {
        .platform = &platform,
        .colors = Palette::current(platform),
        .isDark = platform.appearance && platform.appearance->isDark()};
}

Look Look::onWallpaper() const
{
    auto look = *this;
    look.hasWallpaper = true;
    // On a picture greys turn muddy and weak, so what is quiet is the label's colour, thinned.
    const auto thinned = [&look](int alpha) {
        auto color = look.colors.label;
        color.setAlpha(alpha);
        return color;
    };
    look.colors.secondaryLabel = thinned(look.isDark ? 205 : 200);
    look.colors.tertiaryLabel = thinned(165);
    look.colors.tile = QColor(255, 255, 255, look.isDark ? 26 : 120);
    look.colors.field = look.colors.tile;
    look.colors.hover = look.isDark ? QColor(255, 255, 255, 30) : QColor(255, 255, 255, 110);
    look.colors.pressed = look.isDark ? QColor(255, 255, 255, 52) : QColor(255, 255, 255, 160);
    return look;
}

QPixmap Look::symbol(const QString &name, int points, const QColor &color, const QPainter &painter) const
{
    return platform->symbols->pixmap(name, points, color, painter.deviceTransform().m11());
}

} // namespace quillnest
