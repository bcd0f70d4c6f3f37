#pragma once

#include <QColor>

namespace quillnest
{

/// The colours that mean the same wherever they are seen.
namespace QuillnestTheme
{
/// Life: what runs, what is ready.
inline QColor jade()
{
    return QColor::fromRgbF(0.086F, 0.639F, 0.498F);
}
/// What asks to be looked at.
inline QColor ember()
{
    return QColor::fromRgbF(0.949F, 0.392F, 0.239F);
}
} // namespace QuillnestTheme

} // namespace quillnest
