#pragma once

#include "launcher/grid/AppTile.h"

#include <QBasicTimer>
#include <QUuid>
#include <QWidget>

#include <deque>
#include <optional>
#include <vector>

namespace quillnest
{

class Spinner;

/// Sections of tiles, one under the other. One widget for all of them: it paints what is in view and knows where each
/// tile stands, so a large library costs no more than a small one.
class AppGrid : public QWidget
{
    Q_OBJECT

public:
    struct Section {
        /// Empty for a section without a heading.
        QString heading;
        std::vector<MobileApp> apps;

        bool operator==(const Section &) const = default;
    };

    AppGrid(const PanelServices &services, const PanelLook &look, QWidget *parent = nullptr);
    ~AppGrid() override;

    void setSections(std::vector<Section> sections);
    /// Marks or looks have changed.
    void refresh();

    /// How many tiles stand side by side in a panel of that width, in points.
    static int columns(double panelWidth);

    /// The tiles of all sections, in reading order.
    int count() const { return static_cast<int>(m_cells.size()); }
    const AppTile &tile(int index) const { return m_cells[static_cast<std::size_t>(index)].tile; }
    QRect tileRect(int index) const { return m_cells[static_cast<std::size_t>(index)].area; }
    AppTile::Marks marksOf(int index) const { return m_cells[static_cast<std::size_t>(index)].marks; }
    std::optional<int> tileAt(QPoint point) const;

    struct Heading {
        QString text;
        QRect area;
    };
    const std::vector<Heading> &headings() const { return m_headings; }

    /// The tile that has the keyboard.
    std::optional<int> current() const { return m_current; }
    void setCurrent(std::optional<int> index);
    void open(int index);

Q_SIGNALS:
    void opened(const quillnest::MobileApp &app);
    void menuRequested(const quillnest::MobileApp &app, QPoint at);
    /// The keyboard has moved to a tile that should be in view.
    void currentMoved(QRect area);
    /// The keyboard wants to go up from the first row.
    void leftAtTop();

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    struct Cell {
        AppTile tile;
        QRect area;
        AppTile::Marks marks;
        int row = 0;
    };

    void layOut();
    void placeSpinners();
    void setHovered(std::optional<int> index);
    void updateTile(std::optional<int> index);
    void moveBy(int rows);
    std::optional<int> inRow(int row, int x) const;
    void iconCame(QUuid id);

    const PanelServices &m_services;
    const PanelLook &m_look;
    std::vector<Section> m_sections;
    std::vector<Cell> m_cells;
    std::vector<Heading> m_headings;
    std::vector<Spinner *> m_spinners;
    /// Of the apps whose pictures have come and wait to be painted, a few at a time.
    std::deque<QUuid> m_newIcons;
    QBasicTimer m_newIconsTurn;
    std::optional<int> m_hovered;
    std::optional<int> m_pressed;
    std::optional<int> m_current;
    bool m_showsCurrent = false;
};

} // namespace quillnest
