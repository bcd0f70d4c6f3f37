#pragma once

#include <QFont>

namespace quillnest
{

/// The interface font, `points` high in points of the screen.
QFont interfaceFont(int points, QFont::Weight weight = QFont::Normal);

/// The same for large sizes, where there is a cut for them.
QFont displayFont(int points, QFont::Weight weight = QFont::Normal);

/// The interface font with round ends, as near as an installed family comes. `points` may be a fraction.
QFont roundedFont(double points, QFont::Weight weight = QFont::Normal);

} // namespace quillnest
