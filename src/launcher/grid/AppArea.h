#pragma once

#include "launcher/grid/AppGrid.h"

#include <QWidget>

class QLabel;
class QScrollArea;

namespace quillnest
{

class EmptyState;

/// The library below the dock: the tiles that match the search in their sections, what stands there while the library
/// is empty, and what is said when nothing matches.
class AppArea : public QWidget
{
    Q_OBJECT

public:
    /// Both references outlive the area.
    AppArea(const PanelServices &services, const PanelLook &look, QWidget *parent);

    QScrollArea &scrollArea() const { return *m_scroll; }
    AppGrid &grid() const { return *m_grid; }
    /// Whether there are tiles to be seen, which can have the keyboard.
    bool showsTiles() const;

    /// The style or the colours have changed: lays everything out anew.
    void lookChanged();
    /// Marks of tiles have changed.
    void marksChanged();
    /// Opens the first that matches; nothing without a search.
    void openFirstResult();

Q_SIGNALS:
    /// Packages are to be chosen.
    void chooseRequested();

private:
    void appsChanged();
    void searchChanged();
    void showSections();
    void setColors();

    const PanelServices &m_services;
    const PanelLook &m_look;
    /// The library as it is shown, search or not.
    std::vector<MobileApp> m_sortedApps;

    EmptyState *m_empty = nullptr;
    QScrollArea *m_scroll = nullptr;
    AppGrid *m_grid = nullptr;
    QLabel *m_nothing = nullptr;
};

} // namespace quillnest
