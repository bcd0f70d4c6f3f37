#pragma once

namespace quillnest
{

class AppGrid;

/// Makes grids known to screen readers: a list of their headings and tiles, each tile with its name, its marks in words
/// and the action that opens it.
void installAppGridAccess();

/// Tells screen readers that a grid has other tiles now.
void appGridRebuilt(AppGrid &grid);
/// Tells them that the keyboard is on a tile.
void appGridFocused(AppGrid &grid, int index);
/// Tells them that a tile's marks have changed.
void appGridTileChanged(AppGrid &grid, int index);

} // namespace quillnest
