#pragma once

#include "launcher/PanelLook.h"
#include "launcher/PanelServices.h"

#include <QWidget>

class QLabel;

namespace quillnest
{

class PanelSettingsPage;

/// The settings as they stand in place of the launcher: a title with the way back, and the page below it.
class SettingsPane : public QWidget
{
    Q_OBJECT

public:
    /// Both references must outlive the pane.
    SettingsPane(const PanelServices &services, const PanelLook &look, QWidget *parent);

    /// Takes over the look and the settings as they are now.
    void refresh();

Q_SIGNALS:
    /// Back to the apps.
    void left();

private:
    const PanelLook &m_look;
    QLabel *m_title = nullptr;
    PanelSettingsPage *m_page = nullptr;
};

} // namespace quillnest
