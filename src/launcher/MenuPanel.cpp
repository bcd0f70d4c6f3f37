#include "launcher/MenuPanel.h"

#include "base/QuillnestLayout.h"
#include "launcher/AppTile.h"
#include "launcher/Glyph.h"
#include "windows/Palette.h"

#include <QDragEnterEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

namespace quillnest
{

namespace
{

constexpr int tilePitch = 92;

QString stateText(AppLibraryStore::AndroidState state)
{
    switch (state) {
    case AppLibraryStore::AndroidState::ready:
        return QStringLiteral("Ready");
    case AppLibraryStore::AndroidState::starting:
        return QStringLiteral("Starting…");
    case AppLibraryStore::AndroidState::sleeping:
        return QStringLiteral("Sleeping");
    case AppLibraryStore::AndroidState::notSetUp:
        break;
    }
    return QStringLiteral("Not set up");
}

void setColor(QWidget *widget, const QColor &color)
{
    auto palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    widget->setPalette(palette);
}

} // namespace

MenuPanel::MenuPanel(const Platform &platform, AppLibraryStore &store, AppIconStore &icons, QWidget *parent)
    : QWidget(parent), m_platform(platform), m_store(store), m_icons(icons)
{
    setAcceptDrops(true);
    setAccessibleName(QStringLiteral("Quillnest"));
    auto *content = new QVBoxLayout(this);
    content->setContentsMargins(14, 14, 14, 12);
    content->setSpacing(10);

    auto *head = new QHBoxLayout;
    head->setContentsMargins(34, 0, 4, 0);
    m_title = new QLabel(QStringLiteral("Quillnest"), this);
    m_title->setFont(interfaceFont(17, QFont::Bold));
    head->addWidget(m_title);
    head->addStretch(1);
    m_state = new QLabel(this);
    m_state->setFont(interfaceFont(12, QFont::Medium));
    head->addWidget(m_state);
    content->addLayout(head);

    auto *scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->viewport()->setAutoFillBackground(false);
    m_gridArea = new QWidget(scroll);
    auto *area = new QVBoxLayout(m_gridArea);
    area->setContentsMargins(0, 0, 0, 0);
    m_empty = new QLabel(QStringLiteral("Drop an APK here to add it"), m_gridArea);
    m_empty->setFont(interfaceFont(13));
    m_empty->setAlignment(Qt::AlignCenter);
    m_empty->setMinimumHeight(180);
    area->addWidget(m_empty);
    m_grid = new QGridLayout;
    m_grid->setSpacing(tilePitch - 84);
    m_grid->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    area->addLayout(m_grid);
    area->addStretch(1);
    scroll->setWidget(m_gridArea);
    // The scroll area switches this on for its widget; the panel's own background is to show through.
    m_gridArea->setAutoFillBackground(false);
    content->addWidget(scroll, 1);

    m_status = new QLabel(this);
    m_status->setFont(interfaceFont(12));
    m_status->setWordWrap(true);
    m_status->setTextFormat(Qt::PlainText);
    content->addWidget(m_status);

    connect(&m_store, &AppLibraryStore::changed, this, &MenuPanel::refresh);
    connect(&m_icons, &AppIconStore::imageChanged, this, [this](QUuid id) {
        const auto tile = m_tiles.find(id);
        const auto image = m_icons.images().find(id);
        if (tile != m_tiles.end() && image != m_icons.images().end())
            tile->second->setImage(image->second);
    });
    if (platform.appearance)
        connect(platform.appearance.get(), &Appearance::changed, this, &MenuPanel::refresh);
    refresh();
}

QImage MenuPanel::snapshot(Platform platform, AppLibraryStore &store, AppIconStore &icons)
{
    platform.appearance = std::make_shared<FixedAppearance>(true);
    MenuPanel panel(platform, store, icons);
    panel.resize(QuillnestLayout::size(*platform.settings).toSize());
    constexpr int scale = 2;
    QImage image(panel.size() * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    panel.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

int MenuPanel::columns() const
{
    return std::max(1, (width() - 28 + 8) / tilePitch);
}

void MenuPanel::rebuild()
{
    for (const auto &[id, tile] : m_tiles)
        tile->deleteLater();
    m_tiles.clear();
    m_shownColumns = columns();
    int index = 0;
    for (const auto &app : m_shown) {
        auto *tile = new AppTile(m_platform, app, m_gridArea);
        tile->setImage(m_icons.image(app));
        connect(tile, &QAbstractButton::clicked, this, [this, app] { m_store.launch(app); });
        tile->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(tile, &QWidget::customContextMenuRequested, this, [this, tile, id = app.id](QPoint at) {
            showContextMenu(id, tile->mapToGlobal(at));
        });
        m_grid->addWidget(tile, index / m_shownColumns, index % m_shownColumns);
        m_tiles.emplace(app.id, tile);
        ++index;
    }
    m_empty->setVisible(m_shown.empty());
}

void MenuPanel::refresh()
{
    const auto apps = m_store.orderedApps();
    if (apps != m_shown || columns() != m_shownColumns) {
        m_shown = apps;
        rebuild();
    }
    for (const auto &[id, tile] : m_tiles)
        tile->setMarks({m_store.launchingAppID() == id, m_store.runningAppIDs().contains(id)});
    m_state->setText(stateText(m_store.androidState()));
    m_status->setText(m_store.statusMessage());
    const auto colors = Palette::current(m_platform);
    setColor(m_title, colors.label);
    setColor(m_state, colors.secondaryLabel);
    setColor(m_status, colors.secondaryLabel);
    setColor(m_empty, colors.tertiaryLabel);
    update();
}

void MenuPanel::showContextMenu(QUuid id, QPoint at)
{
    const auto found
        = std::find_if(m_shown.begin(), m_shown.end(), [id](const MobileApp &entry) { return entry.id == id; });
    if (found == m_shown.end())
        return;
    const auto app = *found;
    const bool running = m_store.runningAppIDs().contains(id);
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto add = [this, menu](const QString &title, std::function<void()> action) {
        connect(menu->addAction(title), &QAction::triggered, this, std::move(action));
    };
    add(running ? QStringLiteral("Show") : QStringLiteral("Open"), [this, app] { m_store.launch(app); });
    if (running)
        add(QStringLiteral("Close"), [this, app] { m_store.close(app); });
    add(app.isFavorite ? QStringLiteral("Remove from favourites") : QStringLiteral("Add to favourites"),
        [this, app] { m_store.toggleFavorite(app); });
    menu->addSeparator();
    add(QStringLiteral("Remove from Quillnest"), [this, app] { m_store.remove(app); });
    add(QStringLiteral("Uninstall from Android…"), [this, app] { m_store.confirmUninstall(app); });
    menu->popup(at);
}

void MenuPanel::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (columns() != m_shownColumns)
        refresh();
}

void MenuPanel::paintEvent(QPaintEvent *)
{
    const auto colors = Palette::current(m_platform);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors.windowBackground);
    if (window()->testAttribute(Qt::WA_TranslucentBackground))
        painter.drawRoundedRect(QRectF(rect()), windowCornerRadius, windowCornerRadius);
    else
        painter.drawRect(rect());
    drawGlyph(painter, QRectF(18, 15, 22, 22), colors.label);
}

void MenuPanel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        window()->close();
    else
        QWidget::keyPressEvent(event);
}

void MenuPanel::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void MenuPanel::dropEvent(QDropEvent *event)
{
    m_store.addFiles(event->mimeData()->urls());
    event->acceptProposedAction();
}

} // namespace quillnest
