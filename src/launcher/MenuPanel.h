#pragma once

#include "core/AppLibraryStore.h"
#include "package/AppIconStore.h"

#include <QImage>
#include <QWidget>

class QGridLayout;
class QLabel;

namespace quillnest
{

class AppTile;

/// The launcher: the library as a grid of tiles with the status line below. A click on a tile opens its app; package
/// files dropped on it join the library.
class MenuPanel : public QWidget
{
    Q_OBJECT

public:
    MenuPanel(const Platform &platform, AppLibraryStore &store, AppIconStore &icons, QWidget *parent = nullptr);

    /// A picture of the panel as it would open now, dark and with two pixels to a point.
    static QImage snapshot(Platform platform, AppLibraryStore &store, AppIconStore &icons);

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void rebuild();
    void refresh();
    int columns() const;
    void showContextMenu(QUuid id, QPoint at);

    const Platform &m_platform;
    AppLibraryStore &m_store;
    AppIconStore &m_icons;
    QGridLayout *m_grid = nullptr;
    QWidget *m_gridArea = nullptr;
    QLabel *m_title = nullptr;
    QLabel *m_state = nullptr;
    QLabel *m_status = nullptr;
    QLabel *m_empty = nullptr;
    std::vector<MobileApp> m_shown;
    std::map<QUuid, AppTile *> m_tiles;
    int m_shownColumns = 0;
};

} // namespace quillnest
