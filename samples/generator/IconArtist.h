#pragma once

#include <QString>

class QPainter;

namespace samples
{

/// Paints the named icon on a square of 192 units. False when there is no such icon.
bool paintIcon(const QString &name, QPainter &painter);

} // namespace samples
