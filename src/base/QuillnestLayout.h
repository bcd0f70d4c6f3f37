#pragma once

#include "base/BaseSettings.h"
#include "platform/SettingsStore.h"

#include <QSize>
#include <QString>

#include <array>

namespace quillnest
{

/// A size that app windows can be set to: the video area in points, without the header.
struct WindowSizePreset {
    const char *name;
    int width;
    int height;

    /// "{name} — {width} × {height}"
    QString label() const;
};

/// The one size that the panel and all app windows share.
namespace QuillnestLayout
{
constexpr QSize defaultSize{
    static_cast<int>(BaseSettings::panelWidth.defaultValue()),
    static_cast<int>(BaseSettings::panelHeight.defaultValue())};
constexpr QSize minimumSize{280, 420};
/// More than any screen has. Hand-written settings may hold anything.
constexpr QSize largestSize{16384, 16384};
/// Height of a window's header in points.
constexpr int headerHeight = 36;

/// In the order of the size menu.
constexpr std::array<WindowSizePreset, 9> presets{{
    {"Widget", 320, 420},
    {"Small", 340, 600},
    {"Compact", 360, 660},
    {"Medium", 380, 720},
    {"Tall", 390, 840},
    {"Large", 420, 880},
    {"Extra Large", 440, 920},
    {"Landscape", 660, 420},
    {"Tablet", 760, 1000},
}};

/// The saved frame size in points, header included. Both values must reach the minimum for either to count.
QSizeF size(const SettingsStore &settings);
/// That of the launcher: the same, but never so small that hardly an app fits into it.
QSize launcherSize(const SettingsStore &settings);
/// Stores each value rounded to a whole number.
void setSize(SettingsStore &settings, QSizeF size);
} // namespace QuillnestLayout

} // namespace quillnest
