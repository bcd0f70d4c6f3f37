#pragma once

#include "launcher/PanelLook.h"
#include "launcher/PanelServices.h"
#include "launcher/wallpaper/PanelBackground.h"

#include <QImage>
#include <QWidget>

class QLabel;
class QSpacerItem;
class QVBoxLayout;

namespace quillnest
{

class AppArea;
class DropOverlay;
class GreetingHeader;
class HeaderIconButton;
class QuillDock;
class SearchField;
class SettingsPane;
class StatusPill;
class StatusText;

/// The launcher: a greeting, the search, what Android is doing, and the library as grids of tiles. Takes dropped files
/// and makes room for the settings. One type for the popup, the home panel and the diagnostic picture.
class MenuPanel : public QWidget
{
    Q_OBJECT

public:
    enum class Mode {
        live,
        /// For the diagnostic picture: shows the apps whatever Android lacks.
        snapshot,
    };

    /// `services` must outlive the panel.
    explicit MenuPanel(const PanelServices &services, Mode mode = Mode::live, QWidget *parent = nullptr);
    ~MenuPanel() override;

    /// A picture of the panel as it would open now, dark and with two pixels to a point.
    static QImage snapshot(PanelServices services);

    /// Whether the setup stands in place of the apps.
    bool showSetup() const;
    bool showsSettings() const { return m_showSettings; }
    void setShowSettings(bool on);

    /// Asks for packages and adds them.
    void importFiles();

    struct PlacedTile {
        QUuid id;
        QString name;
        /// On the screen, in points.
        QRect area;
    };
    /// The tiles that are in view, in reading order.
    std::vector<PlacedTile> placedTiles() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    // Building, once.
    QWidget *makeTitleBar();
    QWidget *makeFooter();
    void wire();

    // Following the store and the settings.
    void paintGround(QPainter &painter);
    void showStatus();
    void settingChanged(const QString &key);
    void lookChanged();
    void refreshParts();
    void takeFocus();
    void showContextMenu(const MobileApp &app, QPoint at);
    void showMoreMenu();
    void dropped(const QList<QUrl> &urls);

    const PanelServices &m_services;
    const Mode m_mode;
    PanelLook m_look;
    PanelBackground m_background;
    bool m_showSettings = false;

    QWidget *m_launcher = nullptr;
    SettingsPane *m_settings = nullptr;
    QLabel *m_title = nullptr;
    HeaderIconButton *m_more = nullptr;
    GreetingHeader *m_header = nullptr;
    SearchField *m_searchField = nullptr;
    QWidget *m_setup = nullptr;
    QVBoxLayout *m_setupPlace = nullptr;
    QSpacerItem *m_fill = nullptr;
    QuillDock *m_dock = nullptr;
    AppArea *m_apps = nullptr;
    StatusText *m_status = nullptr;
    StatusPill *m_pill = nullptr;
    DropOverlay *m_overlay = nullptr;
};

} // namespace quillnest
