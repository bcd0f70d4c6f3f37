#include "launcher/grid/AppArea.h"

#include "launcher/EmptyState.h"
#include "look/Fonts.h"
#include "look/SlimScrollBar.h"

#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

namespace quillnest
{

namespace
{
constexpr int margin = 16;
constexpr int scrollStep = 48;
} // namespace

AppArea::AppArea(const PanelServices &services, const PanelLook &look, QWidget *parent)
    : QWidget(parent), m_services(services), m_look(look)
{
    auto *area = new QVBoxLayout(this);
    area->setContentsMargins(0, 8, 0, 0);
    area->setSpacing(0);
    m_empty = new EmptyState(look, this);
    area->addWidget(m_empty, 1);
    m_scroll = new QScrollArea(this);
    m_scroll->setWidgetResizable(true);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setFocusPolicy(Qt::NoFocus);
    m_scroll->verticalScrollBar()->setSingleStep(scrollStep);
    m_scroll->viewport()->setAutoFillBackground(false);
    m_grid = new AppGrid(services, look, m_scroll);
    m_scroll->setWidget(m_grid);
    // The scroll area switches this on for its widget; the panel's own background is to show through.
    m_grid->setAutoFillBackground(false);
    new SlimScrollBar(*m_scroll, look);
    area->addWidget(m_scroll, 1);
    m_nothing = new QLabel(this);
    m_nothing->setTextFormat(Qt::PlainText);
    m_nothing->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_nothing->setWordWrap(true);
    m_nothing->setFont(interfaceFont(13));
    m_nothing->setContentsMargins(margin, 24, margin, 0);
    area->addWidget(m_nothing, 1);

    connect(m_empty, &EmptyState::chooseRequested, this, &AppArea::chooseRequested);
    connect(m_grid, &AppGrid::currentMoved, this, [this](QRect tile) {
        m_scroll->ensureVisible(tile.center().x(), tile.center().y(), 0, tile.height() / 2 + 32);
    });
    connect(&services.store, &AppLibrary::appsChanged, this, &AppArea::appsChanged);
    connect(&services.store, &AppLibraryStore::searchChanged, this, &AppArea::searchChanged);
    appsChanged();
    setColors();
}

bool AppArea::showsTiles() const
{
    return m_grid->isVisible() && m_grid->count() > 0;
}

void AppArea::appsChanged()
{
    m_sortedApps = m_services.store.appsByName();
    showSections();
}

void AppArea::searchChanged()
{
    showSections();
    m_scroll->verticalScrollBar()->setValue(0);
}

void AppArea::showSections()
{
    const auto search = m_services.store.search();
    const bool searching = !search.isEmpty();
    const bool bare = m_look.style == ThemeStyle::ios;
    AppGrid::Section all{searching ? QStringLiteral("Results") : bare ? QString() : QStringLiteral("All apps"), {}};
    AppGrid::Section favourites{bare ? QString() : QStringLiteral("Favourites"), {}};
    for (const auto &app : m_sortedApps) {
        if (!m_services.store.matchesSearch(app))
            continue;
        all.apps.push_back(app);
        if (app.isFavorite && !searching)
            favourites.apps.push_back(app);
    }
    m_nothing->setText(QStringLiteral("Nothing matches “%1”").arg(search));
    m_empty->setVisible(m_sortedApps.empty());
    const bool inVain = all.apps.empty();
    m_scroll->setVisible(!m_sortedApps.empty());
    m_nothing->setVisible(!m_sortedApps.empty() && inVain);
    std::vector<AppGrid::Section> sections;
    if (!favourites.apps.empty())
        sections.push_back(std::move(favourites));
    if (!m_sortedApps.empty())
        sections.push_back(std::move(all));
    m_grid->setSections(std::move(sections));
    // A heading without tiles leaves the rest to the words.
    m_scroll->setMaximumHeight(inVain ? m_grid->minimumHeight() : QWIDGETSIZE_MAX);
}

void AppArea::setColors()
{
    auto palette = m_nothing->palette();
    palette.setColor(QPalette::WindowText, m_look.colors.secondaryLabel);
    m_nothing->setPalette(palette);
}

void AppArea::lookChanged()
{
    m_empty->refresh();
    setColors();
    // Headings and heights follow the style.
    showSections();
}

void AppArea::marksChanged()
{
    m_grid->refresh();
}

void AppArea::openFirstResult()
{
    if (!m_services.store.search().isEmpty() && showsTiles())
        m_grid->open(0);
}

} // namespace quillnest
