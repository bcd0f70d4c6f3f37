#include "launcher/MenuPanel.h"

#include "base/QuillnestLayout.h"
#include "launcher/DropOverlay.h"
#include "launcher/Glyph.h"
#include "launcher/GreetingHeader.h"
#include "launcher/LauncherSettings.h"
#include "launcher/PanelMenus.h"
#include "launcher/QuillDock.h"
#include "launcher/SearchField.h"
#include "launcher/StatusPill.h"
#include "launcher/StatusText.h"
#include "launcher/grid/AppArea.h"
#include "launcher/grid/EdgeFade.h"
#include "launcher/settings/SettingsPane.h"
#include "launcher/wallpaper/Wallpaper.h"
#include "look/Fonts.h"
#include "runtime/AndroidRuntimePaths.h"

#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPointer>
#include <QVBoxLayout>

namespace quillnest
{

namespace
{

constexpr int margin = 16;
constexpr int titleBarHeight = 44;
constexpr int footerHeight = 32;
/// The setup view is a card of its own and may come nearer to the panel's edges.
constexpr int setupPadding = -14;

void setColor(QWidget *widget, const QColor &color)
{
    auto palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    widget->setPalette(palette);
}

/// The program's sign at the size of a title.
class TitleGlyph : public QWidget
{
public:
    TitleGlyph(const PanelLook &look, QWidget *parent) : QWidget(parent), m_look(look) { setFixedSize(18, 18); }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        drawGlyph(painter, rect(), m_look.colors.label);
    }

private:
    const PanelLook &m_look;
};

} // namespace

MenuPanel::MenuPanel(const PanelServices &services, Mode mode, QWidget *parent)
    : QWidget(parent)
    , m_services(services)
    , m_mode(mode)
    , m_look(PanelLook::current(services.platform))
    , m_background(services.platform)
{
    setAcceptDrops(true);
    setFocusPolicy(Qt::ClickFocus);
    setAccessibleName(QStringLiteral("Quillnest"));
    auto *pages = new QVBoxLayout(this);
    pages->setContentsMargins(0, 0, 0, 0);
    m_launcher = new QWidget(this);
    pages->addWidget(m_launcher);

    auto *column = new QVBoxLayout(m_launcher);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeTitleBar());
    m_header = new GreetingHeader(services.platform, m_look, m_launcher);
    column->addWidget(m_header);
    const auto inset = [column](QWidget *widget) {
        auto *row = new QHBoxLayout;
        row->setContentsMargins(margin, 12, margin, 0);
        row->addWidget(widget);
        column->addLayout(row);
    };
    m_searchField = new SearchField(m_look, m_launcher);
    inset(m_searchField);
    m_setupPlace = new QVBoxLayout;
    column->addLayout(m_setupPlace);
    m_dock = new QuillDock(services, m_look, m_launcher);
    inset(m_dock);
    m_apps = new AppArea(services, m_look, m_launcher);
    column->addWidget(m_apps, 1);
    new EdgeFade(m_apps->scrollArea(), *this, [this](QPainter &painter) { paintGround(painter); });
    // Without the apps the rest keeps to the top.
    m_fill = new QSpacerItem(0, 0);
    column->addItem(m_fill);
    column->addWidget(makeFooter());
    m_overlay = new DropOverlay(m_look, this);
    wire();
    m_searchField->setText(services.store.search());
    refreshParts();
}

MenuPanel::~MenuPanel() = default;

QWidget *MenuPanel::makeTitleBar()
{
    auto *bar = new QWidget(m_launcher);
    bar->setFixedHeight(titleBarHeight);
    auto *row = new QHBoxLayout(bar);
    row->setContentsMargins(margin, 8, 10, 4);
    row->setSpacing(8);
    row->addWidget(new TitleGlyph(m_look, bar));
    m_title = new QLabel(QStringLiteral("Quillnest"), bar);
    m_title->setFont(interfaceFont(13, QFont::DemiBold));
    row->addWidget(m_title);
    row->addStretch(1);
    const auto button = [&](const char *symbol, const char *help) {
        auto *made = new HeaderIconButton(m_look, QLatin1String(symbol), QLatin1String(help), bar);
        row->addWidget(made);
        return made;
    };
    connect(button("plus", "Add an APK"), &QAbstractButton::clicked, this, &MenuPanel::importFiles);
    m_more = button("ellipsis", "More");
    connect(m_more, &QAbstractButton::clicked, this, &MenuPanel::showMoreMenu);
    return bar;
}

QWidget *MenuPanel::makeFooter()
{
    auto *footer = new QWidget(m_launcher);
    footer->setFixedHeight(footerHeight);
    auto *row = new QHBoxLayout(footer);
    constexpr int inset = StatusText::inset;
    row->setContentsMargins(margin - inset, 0, margin - inset, 4);
    row->setSpacing(8);
    m_status = new StatusText(m_look, *m_services.platform.pasteboard, footer);
    row->addWidget(m_status, 1);
    m_pill = new StatusPill(m_look, footer);
    row->addWidget(m_pill);
    row->addSpacing(inset);
    return footer;
}

void MenuPanel::wire()
{
    const auto &platform = m_services.platform;
    const auto *store = &m_services.store;
    connect(store, &AppLibraryStore::statusMessageChanged, this, &MenuPanel::showStatus);
    connect(
        store, &AppLibraryStore::searchChanged, this, [this] { m_searchField->setText(m_services.store.search()); });
    for (const auto signal :
         {&AppLibraryStore::androidStateChanged, &AppLibraryStore::androidVersionsChanged,
          &AppLibraryStore::launchingAppChanged, &AppLibraryStore::runningAppsChanged,
          &AppLibraryStore::unreadAppsChanged, &AppLibraryStore::nowPlayingChanged})
        connect(store, signal, this, &MenuPanel::refreshParts);
    connect(store, &AppLibrary::appsChanged, this, &MenuPanel::refreshParts);
    connect(platform.settings.get(), &SettingsStore::changed, this, &MenuPanel::settingChanged);
    if (platform.appearance)
        connect(platform.appearance.get(), &Appearance::changed, this, &MenuPanel::lookChanged);
    connect(m_apps, &AppArea::chooseRequested, this, &MenuPanel::importFiles);
    const auto *grid = &m_apps->grid();
    connect(grid, &AppGrid::opened, this, [this](const MobileApp &app) { m_services.store.launch(app); });
    connect(grid, &AppGrid::menuRequested, this, &MenuPanel::showContextMenu);
    connect(grid, &AppGrid::leftAtTop, this, [this] { m_searchField->setFocus(Qt::OtherFocusReason); });
    connect(m_searchField, &SearchField::edited, this, [this](const QString &text) {
        if (m_services.store.search() != text)
            m_services.store.setSearch(text);
    });
    connect(m_searchField, &SearchField::leftDownwards, this, [this] {
        if (m_apps->showsTiles())
            m_apps->grid().setFocus(Qt::TabFocusReason);
    });
    connect(m_searchField, &SearchField::accepted, m_apps, &AppArea::openFirstResult);
}

QImage MenuPanel::snapshot(PanelServices services)
{
    services.platform.appearance = std::make_shared<FixedAppearance>(true);
    MenuPanel panel(services, Mode::snapshot);
    panel.resize(QuillnestLayout::launcherSize(*services.platform.settings));
    constexpr int scale = 2;
    QImage image(panel.size() * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    panel.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

QSize MenuPanel::sizeHint() const
{
    return QuillnestLayout::launcherSize(*m_services.platform.settings);
}

bool MenuPanel::showSetup() const
{
    if (m_mode == Mode::snapshot || !m_services.makeSetupView)
        return false;
    if (!AndroidRuntimePaths::current(m_services.platform).isComplete())
        return true;
    return LauncherSettings::showRuntimeSetup.value(*m_services.platform.settings);
}

void MenuPanel::setShowSettings(bool on)
{
    m_showSettings = on;
    if (on && !m_settings) {
        m_settings = new SettingsPane(m_services, m_look, this);
        connect(m_settings, &SettingsPane::left, this, [this] { setShowSettings(false); });
        layout()->addWidget(m_settings);
    }
    m_launcher->setVisible(!on);
    if (m_settings)
        m_settings->setVisible(on);
    m_overlay->raise();
    takeFocus();
}

void MenuPanel::importFiles()
{
    const OpenPanel panel{
        .title = QStringLiteral("Add apps"),
        .kind = QStringLiteral("Apps"),
        .extensions = {QStringLiteral("apk"), QStringLiteral("ipa")},
        .allowsSeveral = true};
    m_services.platform.filePanels->open(
        panel, [store = QPointer<AppLibraryStore>(&m_services.store)](const QList<QUrl> &chosen) {
            if (store && !chosen.isEmpty())
                store->addFiles(chosen);
        });
}

void MenuPanel::showStatus()
{
    m_status->setWords(m_services.store.statusMessage());
}

void MenuPanel::settingChanged(const QString &key)
{
    if (key == LauncherSettings::wallpaperRevision.key())
        m_background.forget();
    if (key == LauncherSettings::theme.key() || key == LauncherSettings::wallpaper.key()
        || key == LauncherSettings::wallpaperRevision.key())
        lookChanged();
    else if (key == LauncherSettings::showRuntimeSetup.key())
        refreshParts();
}

void MenuPanel::lookChanged()
{
    m_look = PanelLook::current(m_services.platform);
    m_searchField->refresh();
    m_header->updateGeometry();
    m_apps->lookChanged();
    refreshParts();
    if (m_settings)
        m_settings->refresh();
    const auto all = findChildren<QWidget *>();
    for (auto *child : all)
        child->update();
    update();
}

void MenuPanel::refreshParts()
{
    const auto &colors = m_look.colors;
    const auto &store = m_services.store;
    const bool setup = showSetup();
    if (setup && !m_setup) {
        m_setup = m_services.makeSetupView(m_launcher);
        m_setupPlace->addWidget(m_setup);
    }
    const bool hadFocus = m_setup && !setup && (m_setup->hasFocus() || m_setup->isAncestorOf(focusWidget()));
    if (m_setup)
        m_setup->setVisible(setup);
    // A layout keeps its margins around nothing.
    const int side = margin + setupPadding;
    m_setupPlace->setContentsMargins(setup ? QMargins(side, 12, side, 0) : QMargins());
    m_dock->setVisible(!setup);
    m_apps->setVisible(!setup);
    m_fill->changeSize(0, 0, QSizePolicy::Minimum, setup ? QSizePolicy::Expanding : QSizePolicy::Fixed);
    m_launcher->layout()->invalidate();
    // Android has been set up: the keyboard goes on with the apps.
    if (hadFocus)
        takeFocus();

    setColor(m_title, colors.label);
    setColor(m_status, colors.secondaryLabel);
    showStatus();
    m_pill->setState(store.androidState());
    m_dock->refresh();
    // The dock tells the same in more words while no app takes its place.
    m_pill->setVisible(setup || m_dock->showsApp());
    m_apps->marksChanged();
}

void MenuPanel::showContextMenu(const MobileApp &app, QPoint at)
{
    PanelMenus::forApp(m_services, app, this)->popup(at);
}

void MenuPanel::showMoreMenu()
{
    auto *menu = PanelMenus::more(
        m_services, {.showSettings = [this] { setShowSettings(true); }, .importFiles = [this] { importFiles(); }},
        this);
    menu->popup(m_more->mapToGlobal(QPoint(m_more->width() - menu->sizeHint().width(), m_more->height() + 4)));
}

std::vector<MenuPanel::PlacedTile> MenuPanel::placedTiles() const
{
    std::vector<PlacedTile> result;
    if (!m_apps->showsTiles())
        return result;
    const auto &grid = m_apps->grid();
    const auto view = grid.visibleRegion().boundingRect();
    for (int i = 0; i < grid.count(); ++i) {
        const auto area = grid.tileRect(i);
        if (view.contains(area.center()))
            result.push_back(
                {grid.tile(i).app().id, grid.tile(i).name(), QRect(grid.mapToGlobal(area.topLeft()), area.size())});
    }
    return result;
}

void MenuPanel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    paintGround(painter);
}

void MenuPanel::paintGround(QPainter &painter)
{
    const bool rounded = window()->testAttribute(Qt::WA_TranslucentBackground);
    m_background.paint(painter, rect(), m_look, rounded ? windowCornerRadius : 0);
}

void MenuPanel::resizeEvent(QResizeEvent *)
{
    m_overlay->setGeometry(rect());
}

void MenuPanel::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // The photo behind it may have come or gone meanwhile, which nobody tells.
    if (Wallpaper::isSet(m_services.platform) != m_look.hasWallpaper)
        lookChanged();
    takeFocus();
}

void MenuPanel::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    // What was looked for last time would hide the library the next time. A desktop that is merely left keeps it.
    if (!event->spontaneous())
        m_services.store.setSearch({});
}

void MenuPanel::takeFocus()
{
    // Without a ring anywhere, until the keyboard is used; whatever is typed goes on from here.
    if (m_apps->showsTiles())
        m_apps->grid().setFocus(Qt::OtherFocusReason);
    else
        setFocus(Qt::OtherFocusReason);
}

void MenuPanel::keyPressEvent(QKeyEvent *event)
{
    const auto &store = m_services.store;
    if (event->key() == Qt::Key_Escape) {
        if (m_showSettings)
            setShowSettings(false);
        else if (!store.search().isEmpty())
            m_services.store.setSearch({});
        else
            window()->close();
        return;
    }
    const auto text = event->text();
    const bool plain = !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    if (!m_showSettings && plain && !text.isEmpty() && text.front().isPrint() && !text.front().isSpace())
        m_searchField->take(text);
    else if (!m_showSettings && event->key() == Qt::Key_Backspace && !store.search().isEmpty())
        m_searchField->edit().setFocus(Qt::OtherFocusReason);
    else if (event->key() >= Qt::Key_Home && event->key() <= Qt::Key_PageDown && m_apps->showsTiles())
        m_apps->grid().setFocus(Qt::TabFocusReason);
    else
        QWidget::keyPressEvent(event);
}

void MenuPanel::dragEnterEvent(QDragEnterEvent *event)
{
    if (!event->mimeData()->hasUrls())
        return;
    event->acceptProposedAction();
    m_overlay->show();
    m_overlay->raise();
}

void MenuPanel::dragLeaveEvent(QDragLeaveEvent *)
{
    m_overlay->hide();
}

void MenuPanel::dropEvent(QDropEvent *event)
{
    m_overlay->hide();
    event->acceptProposedAction();
    dropped(event->mimeData()->urls());
}

void MenuPanel::dropped(const QList<QUrl> &urls)
{
    // Each by itself, so that the last one's outcome is what the status tells.
    for (const auto &url : urls) {
        if (url.isValid())
            m_services.store.addFiles({url});
    }
}

} // namespace quillnest
