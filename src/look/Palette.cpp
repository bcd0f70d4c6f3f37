#include "look/Palette.h"

#include "platform/Appearance.h"

#include <cmath>

namespace quillnest
{

Palette Palette::light()
{
    return {
        .windowBackground = QColor(0xF4F4F6),
        .headerBackground = QColor(0xECECEF),
        .label = QColor(0x1C1C1E),
        .secondaryLabel = QColor(0x5B5B60),
        .tertiaryLabel = QColor(0x8A8A8F),
        .controlAccent = QColor(0x0A6CFF),
        .destructive = QColor(0xC9271B),
        .hover = QColor(0, 0, 0, 18),
        .pressed = QColor(0, 0, 0, 36),
        .separator = QColor(0, 0, 0, 28),
        .tile = QColor(0xFFFFFF),
        .field = QColor(0xFFFFFF),
    };
}

Palette Palette::dark()
{
    return {
        .windowBackground = QColor(0x1E1E21),
        .headerBackground = QColor(0x2A2A2E),
        .label = QColor(0xF2F2F4),
        .secondaryLabel = QColor(0xB4B4BA),
        .tertiaryLabel = QColor(0x85858B),
        .controlAccent = QColor(0x3D8BFF),
        .destructive = QColor(0xFF7066),
        .hover = QColor(255, 255, 255, 22),
        .pressed = QColor(255, 255, 255, 40),
        .separator = QColor(255, 255, 255, 30),
        .tile = QColor(0x2C2C30),
        .field = QColor(0x2C2C30),
    };
}

Palette Palette::current(const Platform &platform)
{
    return platform.appearance && platform.appearance->isDark() ? dark() : light();
}

QColor Palette::solidSeparator() const
{
    const double share = separator.alphaF();
    const auto blend
        = [share](int over, int ground) { return static_cast<int>(std::lround(over * share + ground * (1 - share))); };
    return {
        blend(separator.red(), field.red()), blend(separator.green(), field.green()),
        blend(separator.blue(), field.blue())};
}

QPalette Palette::toolkitPalette() const
{
    QPalette palette(field, windowBackground);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, label);
    palette.setColor(QPalette::Base, field);
    palette.setColor(QPalette::Mid, solidSeparator());
    palette.setColor(QPalette::ToolTipBase, field);
    palette.setColor(QPalette::PlaceholderText, tertiaryLabel);
    palette.setColor(QPalette::Highlight, controlAccent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, tertiaryLabel);
    return palette;
}

} // namespace quillnest
