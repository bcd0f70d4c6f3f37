#pragma once

#include "windows/AndroidAppPanel.h"
#include "windows/WindowServices.h"

#include <functional>
#include <memory>
#include <optional>

namespace quillnest
{

/// The launcher shown as a window, in the place where an app window stood. It goes when it loses the keyboard.
class HomePanelController
{
public:
    explicit HomePanelController(const WindowServices &services);
    ~HomePanelController();

    /// Gives the launcher's view; set by the composition root. Without it there is no panel.
    std::function<QWidget *()> makeContent;

    /// Shows the panel with its top left corner at `origin`, else in the upper right corner of the main screen.
    void show(std::optional<QPoint> origin);
    void orderOut();
    /// The frame of the panel while it is on screen.
    std::optional<QRect> visibleFrame() const;
    AndroidAppPanel *panel() const { return m_panel.get(); }

private:
    void makePanel();

    const WindowServices &m_services;
    std::unique_ptr<AndroidAppPanel> m_panel;
};

} // namespace quillnest
