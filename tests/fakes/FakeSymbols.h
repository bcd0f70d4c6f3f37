#pragma once

#include "platform/Symbols.h"

#include <QStringList>

namespace quillnest
{

/// Symbols that are filled squares of the colour asked for, so that a look at the pixels tells the colour.
class FakeSymbols : public Symbols
{
public:
    QPixmap pixmap(const QString &name, int points, const QColor &color, double scale) const override
    {
        asked.append(name);
        QPixmap pixmap(QSize(points, points) * scale);
        pixmap.setDevicePixelRatio(scale);
        pixmap.fill(color);
        return pixmap;
    }

    /// The names that were asked for, in order.
    mutable QStringList asked;
};

} // namespace quillnest
