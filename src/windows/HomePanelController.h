#pragma once

#include "windows/AndroidAppPanel.h"
#include "windows/WindowServices.h"

#include <functional>
#include <memory>
#include <optional>

namespace quillnest
{

/// The launcher shown as a window above all others, in the place where an app window stood. It goes when it loses the
/// keyboard, but not to a dialog of the program's own and not while something is being dragged to it.
class HomePanelController
{
public:
    explicit HomePanelController(const WindowServices &services);
    ~HomePanelController();

    /// Gives the launcher's view; set by the composition root. Without it there is no panel.
    std::function<QWidget *()> makeContent;

    /// Shows the panel with its top left corner at `origin`, else beside the status icons of the main screen.
    void show(std::optional<QPoint> origin);
    void orderOut();
    /// The frame of the panel while it is on screen.
    std::optional<QRect> visibleFrame() const;
    AndroidAppPanel *panel() const { return m_panel.get(); }

private:
    void makePanel();
    void leave();
    void forgetLeaving();

    const WindowServices &m_services;
    std::unique_ptr<AndroidAppPanel> m_panel;
    /// The keyboard is with something that will give it back.
    std::unique_ptr<Timer> m_leaving;
    bool m_comesBack = false;
    bool m_isDraggedTo = false;
};

} // namespace quillnest
