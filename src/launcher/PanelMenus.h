#pragma once

#include "launcher/PanelServices.h"

#include <functional>

class QMenu;
class QWidget;

namespace quillnest
{

/// The panel's menus, made anew each time they open. Each deletes itself when it closes.
namespace PanelMenus
{
/// All that can be done with an app.
QMenu *forApp(const PanelServices &services, const MobileApp &app, QWidget *parent);

struct MoreActions {
    std::function<void()> showSettings;
    std::function<void()> importFiles;
};
/// The menu behind the three dots.
QMenu *more(const PanelServices &services, const MoreActions &actions, QWidget *parent);

/// A preset's entry, with a tick if the windows have its size now.
QString sizeTitle(const SettingsStore &settings, const WindowSizePreset &preset);
} // namespace PanelMenus

} // namespace quillnest
