#pragma once

#include "platform/Platform.h"

#include <QColor>
#include <QPalette>

namespace quillnest
{

/// The colours and fonts of the interface in the desktop's present appearance.
struct Palette {
    QColor windowBackground;
    QColor headerBackground;
    QColor label;
    QColor secondaryLabel;
    QColor tertiaryLabel;
    QColor controlAccent;
    /// Words that name what can't be taken back.
    QColor destructive;
    QColor hover;
    QColor pressed;
    QColor separator;
    QColor tile;
    QColor field;

    static Palette light();
    static Palette dark();
    /// As the desktop's appearance is now.
    static Palette current(const Platform &platform);

    /// The same colours for the toolkit's own menus and dialogs.
    QPalette toolkitPalette() const;

    /// The separator's colour as it looks on a field.
    QColor solidSeparator() const;
};

/// How rounded windows are where the desktop can show that, in points.
constexpr int windowCornerRadius = 12;

} // namespace quillnest
