#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

namespace quillnest
{

/// Monochrome symbols by name, such as "chevron.left", from a set that the host has installed. Main thread.
class Symbols
{
public:
    virtual ~Symbols() = default;

    /// The symbol in one colour, `points` wide and high, crisp at `scale` pixels per point; null for an unknown name.
    virtual QPixmap pixmap(const QString &name, int points, const QColor &color, double scale) const = 0;
};

} // namespace quillnest
