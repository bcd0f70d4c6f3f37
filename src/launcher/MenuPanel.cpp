#include "launcher/MenuPanel.h"

#include "base/QuillnestLayout.h"
#include "base/QuillnestSettings.h"
#include "launcher/DropOverlay.h"
#include "launcher/EmptyState.h"
#include "launcher/Glyph.h"
#include "launcher/GreetingHeader.h"
#include "launcher/PanelMenus.h"
#include "launcher/QuillDock.h"
#include "launcher/SearchField.h"
#include "launcher/StatusPill.h"
#include "launcher/settings/SettingsPane.h"
#include "launcher/wallpaper/Wallpaper.h"
#include "look/ElidedLabel.h"
#include "look/Fonts.h"
#include "look/PlainWords.h"
#include "look/SlimScrollBar.h"
#include "runtime/AndroidRuntimePaths.h"

#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace quillnest
{

namespace
{

constexpr int margin = 16;
constexpr int titleBarHeight = 44;
constexpr int footerHeight = 32;
constexpr int scrollStep = 48;
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
    makeApps(column);
    // Without the apps the rest keeps to the top.
    m_fill = new QSpacerItem(0, 0);
    column->addItem(m_fill);
    column->addWidget(makeFooter());
    m_overlay = new DropOverlay(m_look, this);
    wire();
    m_searchField->setText(services.store.search());
    refreshApps(true);
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

void MenuPanel::makeApps(QVBoxLayout *column)
{
    m_appArea = new QWidget(m_launcher);
    auto *area = new QVBoxLayout(m_appArea);
    area->setContentsMargins(0, 8, 0, 0);
    area->setSpacing(0);
    m_empty = new EmptyState(m_look, m_appArea);
    area->addWidget(m_empty, 1);
    m_scroll = new QScrollArea(m_appArea);
    m_scroll->setWidgetResizable(true);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setFocusPolicy(Qt::NoFocus);
    m_scroll->verticalScrollBar()->setSingleStep(scrollStep);
    m_scroll->viewport()->setAutoFillBackground(false);
    m_grid = new AppGrid(m_services, m_look, m_scroll);
    m_scroll->setWidget(m_grid);
    // The scroll area switches this on for its widget; the panel's own background is to show through.
    m_grid->setAutoFillBackground(false);
    new SlimScrollBar(*m_scroll, m_look);
    area->addWidget(m_scroll, 1);
    m_nothing = new QLabel(m_appArea);
    m_nothing->setTextFormat(Qt::PlainText);
    m_nothing->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_nothing->setWordWrap(true);
    m_nothing->setFont(interfaceFont(13));
    m_nothing->setContentsMargins(margin, 40, margin, 0);
    area->addWidget(m_nothing, 1);
    column->addWidget(m_appArea, 1);
}

QWidget *MenuPanel::makeFooter()
{
    auto *footer = new QWidget(m_launcher);
    footer->setFixedHeight(footerHeight);
    auto *row = new QHBoxLayout(footer);
    row->setContentsMargins(margin, 0, margin, 4);
    row->setSpacing(8);
    m_status = new ElidedLabel(footer);
    m_status->setFont(interfaceFont(11));
    m_status->setTextFormat(Qt::PlainText);
    row->addWidget(m_status, 1);
    m_pill = new StatusPill(footer);
    row->addWidget(m_pill);
    return footer;
}

void MenuPanel::wire()
{
    const auto &platform = m_services.platform;
    connect(&m_services.store, &AppLibraryStore::changed, this, &MenuPanel::storeChanged);
    connect(platform.settings.get(), &SettingsStore::changed, this, &MenuPanel::settingChanged);
    if (platform.appearance)
        connect(platform.appearance.get(), &Appearance::changed, this, &MenuPanel::lookChanged);
    connect(m_empty, &EmptyState::chooseRequested, this, &MenuPanel::importFiles);
    connect(m_grid, &AppGrid::opened, this, [this](const MobileApp &app) { m_services.store.launch(app); });
    connect(m_grid, &AppGrid::menuRequested, this, &MenuPanel::showContextMenu);
    connect(m_grid, &AppGrid::currentMoved, this, [this](QRect area) {
        m_scroll->ensureVisible(area.center().x(), area.center().y(), 0, area.height() / 2 + 32);
    });
    connect(m_grid, &AppGrid::leftAtTop, this, [this] { m_searchField->setFocus(Qt::OtherFocusReason); });
    connect(m_searchField, &SearchField::edited, this, [this](const QString &text) {
        if (m_services.store.search() != text)
            m_services.store.setSearch(text);
    });
    connect(m_searchField, &SearchField::leftDownwards, this, [this] {
        if (m_grid->count() > 0 && m_grid->isVisible())
            m_grid->setFocus(Qt::TabFocusReason);
    });
    connect(m_searchField, &SearchField::accepted, this, [this] {
        if (!m_search.isEmpty() && m_grid->isVisible() && m_grid->count() > 0)
            m_grid->open(0);
    });
}

QImage MenuPanel::snapshot(PanelServices services)
{
    services.platform.appearance = std::make_shared<FixedAppearance>(true);
    MenuPanel panel(services, Mode::snapshot);
    panel.resize(QuillnestLayout::size(*services.platform.settings).toSize());
    constexpr int scale = 2;
    QImage image(panel.size() * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    panel.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

QSize MenuPanel::sizeHint() const
{
    return QuillnestLayout::size(*m_services.platform.settings).toSize();
}

bool MenuPanel::showSetup() const
{
    if (m_mode == Mode::snapshot || !m_services.makeSetupView)
        return false;
    if (!AndroidRuntimePaths::current(m_services.platform).isComplete())
        return true;
    return QuillnestSettings::flag(*m_services.platform.settings, QStringLiteral("QuillnestShowRuntimeSetup"), false);
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

void MenuPanel::storeChanged()
{
    m_searchField->setText(m_services.store.search());
    refreshApps(false);
    refreshParts();
}

void MenuPanel::settingChanged(const QString &key)
{
    if (key == Wallpaper::revisionKey())
        m_background.forget();
    if (key == QuillnestTheme::styleKey() || key == Wallpaper::key() || key == Wallpaper::revisionKey())
        lookChanged();
    else if (key == QStringLiteral("QuillnestShowRuntimeSetup"))
        refreshParts();
}

void MenuPanel::lookChanged()
{
    m_look = PanelLook::current(m_services.platform);
    m_searchField->refresh();
    m_empty->refresh();
    m_header->updateGeometry();
    // Headings and heights follow the style.
    refreshApps(true);
    refreshParts();
    if (m_settings)
        m_settings->refresh();
    const auto all = findChildren<QWidget *>();
    for (auto *child : all)
        child->update();
    update();
}

void MenuPanel::refreshApps(bool evenIfUnchanged)
{
    const auto &store = m_services.store;
    // The store announces every line of the status in the same way as a change of the library.
    const bool otherApps = m_apps != store.apps();
    if (!otherApps && m_search == store.search() && !evenIfUnchanged)
        return;
    const bool otherSearch = m_search != store.search();
    if (otherApps) {
        m_apps = store.apps();
        m_sortedApps = store.appsByName();
    }
    m_search = store.search();

    const bool searching = !m_search.isEmpty();
    const bool bare = m_look.style == ThemeStyle::ios;
    AppGrid::Section all{searching ? QStringLiteral("Results") : bare ? QString() : QStringLiteral("All apps"), {}};
    AppGrid::Section favourites{bare ? QString() : QStringLiteral("Favourites"), {}};
    for (const auto &app : m_sortedApps) {
        if (!store.matchesSearch(app))
            continue;
        all.apps.push_back(app);
        if (app.isFavorite && !searching)
            favourites.apps.push_back(app);
    }
    m_nothing->setText(QStringLiteral("Nothing matches “%1”").arg(m_search));
    m_empty->setVisible(m_apps.empty());
    m_scroll->setVisible(!all.apps.empty());
    m_nothing->setVisible(!m_apps.empty() && all.apps.empty());
    std::vector<AppGrid::Section> sections;
    if (!favourites.apps.empty())
        sections.push_back(std::move(favourites));
    if (!all.apps.empty())
        sections.push_back(std::move(all));
    m_grid->setSections(std::move(sections));
    if (otherSearch)
        m_scroll->verticalScrollBar()->setValue(0);
}

void MenuPanel::refreshParts()
{
    const auto &colors = m_look.colors;
    const auto &store = m_services.store;
    const bool setup = showSetup();
    if (setup && !m_setup) {
        m_setup = m_services.makeSetupView(m_launcher);
        m_setupPlace->setContentsMargins(margin + setupPadding + 8, 12, margin + setupPadding + 8, 0);
        m_setupPlace->addWidget(m_setup);
    }
    if (m_setup)
        m_setup->setVisible(setup);
    m_dock->setVisible(!setup);
    m_appArea->setVisible(!setup);
    m_fill->changeSize(0, 0, QSizePolicy::Minimum, setup ? QSizePolicy::Expanding : QSizePolicy::Fixed);
    m_launcher->layout()->invalidate();

    setColor(m_title, colors.label);
    setColor(m_nothing, colors.secondaryLabel);
    setColor(m_status, colors.secondaryLabel);
    m_status->setText(store.statusMessage());
    m_status->setToolTip(plainToolTip(store.statusMessage()));
    m_pill->setState(store.androidState());
    m_dock->refresh();
    // The dock tells the same in more words while no app takes its place.
    m_pill->setVisible(setup || m_dock->showsApp());
    m_grid->refresh();
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
    if (!m_grid->isVisible())
        return result;
    const auto view = m_grid->visibleRegion().boundingRect();
    for (int i = 0; i < m_grid->count(); ++i) {
        const auto area = m_grid->tileRect(i);
        if (view.contains(area.center()))
            result.push_back(
                {m_grid->tile(i).app().id, m_grid->tile(i).name(),
                 QRect(m_grid->mapToGlobal(area.topLeft()), area.size())});
    }
    return result;
}

void MenuPanel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
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
    takeFocus();
}

void MenuPanel::takeFocus()
{
    // Without a ring anywhere, until the keyboard is used; whatever is typed goes on from here.
    if (m_grid->isVisible())
        m_grid->setFocus(Qt::OtherFocusReason);
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
    else if (event->key() >= Qt::Key_Home && event->key() <= Qt::Key_PageDown && m_grid->isVisible())
        m_grid->setFocus(Qt::TabFocusReason);
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
