#pragma once

#include "look/Palette.h"

#include <QPixmap>

class QPainter;

namespace quillnest
{

/// How the controls of a window look at the moment: what they need to know in order to paint themselves. Whoever makes
/// the controls keeps it alive as long as they are, and updates them when it has changed.
struct Look {
    /// Where symbols and the time come from. Never null in the look of a control.
    const Platform *platform = nullptr;
    Palette colors;
    bool isDark = false;
    /// A picture shines through, so what lies on it has to let it.
    bool hasWallpaper = false;

    /// As the desktop says now, on a plain ground. `platform` outlives the look.
    static Look current(const Platform &platform);
    /// The same on a picture.
    Look onWallpaper() const;

    /// A symbol in one colour, as sharp as what the painter paints on.
    QPixmap symbol(const QString &name, int points, const QColor &color, const QPainter &painter) const;
};

} // namespace quillnest
