#include "launcher/grid/AppGrid.h"

#include "launcher/grid/AppGridAccess.h"
#include "look/Fonts.h"
#include "look/PlainWords.h"
#include "look/Spinner.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <set>

namespace quillnest
{

namespace
{

constexpr int sideMargin = 12;
constexpr int topMargin = 4;
constexpr int headingHeight = 28;
constexpr int rowGap = 4;
constexpr int sectionGap = 8;
constexpr int leastWidth = 280;
constexpr int tilePitch = 84;
constexpr int spinnerSize = 24;
/// How many new pictures are painted in a turn of the event loop; each takes a millisecond or two to be put in shape.
constexpr std::ptrdiff_t iconsInTurn = 4;

} // namespace

AppGrid::AppGrid(const PanelServices &services, const PanelLook &look, QWidget *parent)
    : QWidget(parent), m_services(services), m_look(look)
{
    installAppGridAccess();
    setAccessibleName(QStringLiteral("Apps"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    connect(&services.icons, &AppIconStore::imageChanged, this, &AppGrid::iconCame);
}

AppGrid::~AppGrid() = default;

int AppGrid::columns(double panelWidth)
{
    const double width = std::max<double>(panelWidth, leastWidth);
    return std::clamp(static_cast<int>((width - 2 * sideMargin) / tilePitch), 3, 6);
}

void AppGrid::setSections(std::vector<Section> sections)
{
    const auto idOf = [this](std::optional<int> index) { return index ? tile(*index).app().id : QUuid(); };
    const auto current = idOf(m_current);
    // A favourite has two tiles, of which the keyboard is on one.
    const auto isCurrent = [&current](const Cell &cell) { return cell.tile.app().id == current; };
    const bool onLast = m_current && std::none_of(m_cells.begin() + *m_current + 1, m_cells.end(), isCurrent);
    m_sections = std::move(sections);
    m_cells.clear();
    for (const auto &section : m_sections) {
        for (const auto &app : section.apps)
            m_cells.push_back({.tile = AppTile(app), .area = {}, .marks = AppTile::marks(m_services, app.id)});
    }
    m_hovered.reset();
    m_pressed.reset();
    m_current.reset();
    for (int i = 0; i < count() && !current.isNull(); ++i) {
        if (tile(i).app().id == current && (onLast || !m_current))
            m_current = i;
    }
    layOut();
    appGridRebuilt(*this);
}

void AppGrid::refresh()
{
    for (int i = 0; i < count(); ++i) {
        auto &cell = m_cells[static_cast<std::size_t>(i)];
        const auto marks = AppTile::marks(m_services, cell.tile.app().id);
        if (marks == cell.marks)
            continue;
        cell.marks = marks;
        updateTile(i);
        appGridTileChanged(*this, i);
    }
    placeSpinners();
}

void AppGrid::layOut()
{
    m_headings.clear();
    const int perRow = columns(width());
    const double pitch = static_cast<double>(width() - 2 * sideMargin) / perRow;
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const int tileHeight = AppTile::height(m_look.style);
    int y = topMargin;
    int row = 0;
    std::size_t index = 0;
    for (const auto &section : m_sections) {
        if (!section.heading.isEmpty()) {
            m_headings.push_back({section.heading, QRect(16, y, width() - 32, headingHeight)});
            y += headingHeight;
        }
        for (std::size_t i = 0; i < section.apps.size(); ++i, ++index) {
            const int place = static_cast<int>(i) % perRow;
            if (place == 0 && i > 0) {
                y += tileHeight + rowGap;
                ++row;
            }
            const int column = mirrored ? perRow - 1 - place : place;
            const int left = sideMargin + static_cast<int>(std::lround(column * pitch));
            const int right = sideMargin + static_cast<int>(std::lround((column + 1) * pitch));
            m_cells[index].area = QRect(left, y, right - left, tileHeight);
            m_cells[index].row = row;
        }
        if (!section.apps.empty()) {
            y += tileHeight + sectionGap;
            ++row;
        }
    }
    setMinimumHeight(y + sectionGap);
    placeSpinners();
    update();
}

void AppGrid::placeSpinners()
{
    std::size_t used = 0;
    for (const auto &cell : m_cells) {
        if (!cell.marks.launching)
            continue;
        if (used == m_spinners.size()) {
            m_spinners.push_back(new Spinner(m_look, spinnerSize, this));
            m_spinners.back()->setColor(Qt::white);
        }
        auto *spinner = m_spinners[used++];
        QRect place(0, 0, spinnerSize, spinnerSize);
        place.moveCenter(AppTile::iconArea(cell.area).toRect().center());
        spinner->move(place.topLeft());
        spinner->show();
    }
    for (; used < m_spinners.size(); ++used)
        m_spinners[used]->hide();
}

std::optional<int> AppGrid::tileAt(QPoint point) const
{
    for (int i = 0; i < count(); ++i) {
        if (tileRect(i).contains(point))
            return i;
    }
    return std::nullopt;
}

void AppGrid::iconCame(QUuid id)
{
    m_newIcons.push_back(id);
    if (!m_newIconsTurn.isActive())
        m_newIconsTurn.start(0, this);
}

void AppGrid::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_newIconsTurn.timerId())
        return QWidget::timerEvent(event);
    // The rest waits until these are on the screen, and until what the user does meanwhile has been heard.
    const auto count = std::min<std::ptrdiff_t>(std::ssize(m_newIcons), iconsInTurn);
    const std::set<QUuid> shown(m_newIcons.begin(), m_newIcons.begin() + count);
    m_newIcons.erase(m_newIcons.begin(), m_newIcons.begin() + count);
    for (int i = 0; i < this->count(); ++i) {
        if (shown.contains(tile(i).app().id))
            updateTile(i);
    }
    if (m_newIcons.empty())
        m_newIconsTurn.stop();
}

void AppGrid::updateTile(std::optional<int> index)
{
    if (index && *index < count())
        update(tileRect(*index).adjusted(0, -rowGap, 0, rowGap));
}

void AppGrid::setHovered(std::optional<int> index)
{
    if (m_hovered == index)
        return;
    updateTile(m_hovered);
    m_hovered = index;
    updateTile(m_hovered);
}

void AppGrid::setCurrent(std::optional<int> index)
{
    updateTile(m_current);
    m_current = index;
    m_showsCurrent = true;
    updateTile(m_current);
    if (!m_current)
        return;
    Q_EMIT currentMoved(tileRect(*m_current));
    appGridFocused(*this, *m_current);
}

void AppGrid::open(int index)
{
    Q_EMIT opened(MobileApp(tile(index).app()));
}

void AppGrid::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    // Not its bounds: two icons that come at once may lie far apart.
    const auto inView = [event](const QRect &area) { return event->region().intersects(area); };
    painter.setFont(interfaceFont(13, QFont::DemiBold));
    painter.setPen(m_look.colors.secondaryLabel);
    for (const auto &heading : m_headings) {
        if (inView(heading.area))
            painter.drawText(
                heading.area, QStyle::visualAlignment(layoutDirection(), Qt::AlignVCenter | Qt::AlignLeft),
                heading.text);
    }
    for (int i = 0; i < count(); ++i) {
        const auto &cell = m_cells[static_cast<std::size_t>(i)];
        if (!inView(cell.area.adjusted(0, -rowGap, 0, rowGap)))
            continue;
        const bool current = m_current == i && hasFocus() && m_showsCurrent;
        cell.tile.paint(
            painter, cell.area, m_services.icons.image(cell.tile.app()), cell.marks,
            {.hovered = m_hovered == i, .pressed = m_pressed == i && m_hovered == i, .focused = current}, m_look,
            *m_services.platform.symbols);
    }
}

void AppGrid::resizeEvent(QResizeEvent *event)
{
    if (event->size().width() != event->oldSize().width())
        layOut();
}

bool AppGrid::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        const auto index = tileAt(help->pos());
        if (index)
            QToolTip::showText(
                help->globalPos(), plainToolTip(tile(*index).toolTip(m_services)), this, tileRect(*index));
        else
            QToolTip::hideText();
        return true;
    }
    if (event->type() == QEvent::LayoutDirectionChange || event->type() == QEvent::StyleChange)
        layOut();
    return QWidget::event(event);
}

void AppGrid::mouseMoveEvent(QMouseEvent *event)
{
    setHovered(tileAt(event->position().toPoint()));
    setCursor(m_hovered ? Qt::PointingHandCursor : Qt::ArrowCursor);
    // A drag that began between the tiles is the window's.
    if (event->buttons() && !m_pressed)
        event->ignore();
}

void AppGrid::mousePressEvent(QMouseEvent *event)
{
    const auto index = tileAt(event->position().toPoint());
    setHovered(index);
    // Between the tiles a press is for the window, which may be moved by it.
    if (!index) {
        event->ignore();
        return;
    }
    if (event->button() == Qt::LeftButton) {
        m_pressed = index;
        updateTile(m_pressed);
    }
}

void AppGrid::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const auto pressed = std::exchange(m_pressed, std::nullopt);
    updateTile(pressed);
    if (pressed && tileAt(event->position().toPoint()) == pressed)
        open(*pressed);
}

void AppGrid::leaveEvent(QEvent *)
{
    setHovered(std::nullopt);
}

void AppGrid::contextMenuEvent(QContextMenuEvent *event)
{
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    const auto index = byKey ? m_current : tileAt(event->pos());
    if (!index)
        return;
    const auto at = byKey ? mapToGlobal(AppTile::iconArea(tileRect(*index)).center().toPoint()) : event->globalPos();
    Q_EMIT menuRequested(MobileApp(tile(*index).app()), at);
}

std::optional<int> AppGrid::inRow(int row, int x) const
{
    std::optional<int> best;
    int bestDistance = 0;
    for (int i = 0; i < count(); ++i) {
        if (m_cells[static_cast<std::size_t>(i)].row != row)
            continue;
        const int distance = std::abs(tileRect(i).center().x() - x);
        if (!best || distance < bestDistance) {
            best = i;
            bestDistance = distance;
        }
    }
    return best;
}

void AppGrid::moveBy(int rows)
{
    const auto &cell = m_cells[static_cast<std::size_t>(*m_current)];
    const int last = m_cells.back().row;
    if (cell.row + rows < 0 && cell.row == 0 && rows == -1) {
        Q_EMIT leftAtTop();
        return;
    }
    const int row = std::clamp(cell.row + rows, 0, last);
    setCurrent(inRow(row, cell.area.center().x()));
}

void AppGrid::keyPressEvent(QKeyEvent *event)
{
    constexpr int rowsOfPage = 4;
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const auto by = [this](int steps) { setCurrent(std::clamp(*m_current + steps, 0, count() - 1)); };
    const bool plain = !(event->modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier));
    if (m_cells.empty() || !plain) {
        QWidget::keyPressEvent(event);
        return;
    }
    const bool moves = event->key() >= Qt::Key_Home && event->key() <= Qt::Key_PageDown;
    // The first arrow of all shows where the keyboard is.
    if (moves && (!m_current || !m_showsCurrent)) {
        setCurrent(event->key() == Qt::Key_End ? count() - 1 : m_current.value_or(0));
        return;
    }
    switch (event->key()) {
    case Qt::Key_Left:
        return by(mirrored ? 1 : -1);
    case Qt::Key_Right:
        return by(mirrored ? -1 : 1);
    case Qt::Key_Up:
        return moveBy(-1);
    case Qt::Key_Down:
        return moveBy(1);
    case Qt::Key_PageUp:
        return moveBy(-rowsOfPage);
    case Qt::Key_PageDown:
        return moveBy(rowsOfPage);
    case Qt::Key_Home:
        return setCurrent(0);
    case Qt::Key_End:
        return setCurrent(count() - 1);
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
    case Qt::Key_Select:
        if (m_current)
            return open(*m_current);
        break;
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}

void AppGrid::focusInEvent(QFocusEvent *event)
{
    const auto reason = event->reason();
    // After a menu, or another window, the keyboard is where it was, and its ring with it.
    if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason)
        m_showsCurrent = reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason;
    if (m_showsCurrent && !m_current && count() > 0)
        m_current = 0;
    if (m_showsCurrent && m_current)
        setCurrent(m_current);
    QWidget::focusInEvent(event);
}

void AppGrid::hideEvent(QHideEvent *event)
{
    // A panel that opens anew shows no ring until the keyboard is used.
    m_showsCurrent = m_showsCurrent && event->spontaneous();
    QWidget::hideEvent(event);
}

void AppGrid::focusOutEvent(QFocusEvent *event)
{
    updateTile(m_current);
    QWidget::focusOutEvent(event);
}

} // namespace quillnest
