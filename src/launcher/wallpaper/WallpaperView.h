#pragma once

#include "launcher/wallpaper/Wallpaper.h"

#include <QImage>
#include <QSize>

#include <optional>

namespace quillnest
{

/// A wallpaper as it is shown: darkened at the top and the bottom, so that text is readable on any picture.
namespace WallpaperView
{
/// Frosted glass in front of it.
struct Material {
    QColor tint;
    /// How much of what lies behind the tint takes.
    float opacity = 0;
};

/// The picture, `pixels` large and without visible steps. An id that names neither a preset nor a photo that is there
/// gives the darkening alone, on nothing; with a material, which needs something to lie on, a null picture. Any
/// thread.
QImage render(
    const Platform &platform, const QString &id, QSize pixels, const std::optional<Material> &material = std::nullopt);
} // namespace WallpaperView

} // namespace quillnest
