#pragma once

#include "platform/Symbols.h"

namespace quillnest
{

/// Symbols from the symbolic part of the Adwaita icon theme.
class ThemeSymbols : public Symbols
{
public:
    QPixmap pixmap(const QString &name, int points, const QColor &color, double scale) const override;
};

} // namespace quillnest
