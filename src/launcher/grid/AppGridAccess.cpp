#include "launcher/grid/AppGridAccess.h"

#include "launcher/grid/AppGrid.h"

#include <QAccessibleWidget>
#include <QPointer>

#include <vector>

namespace quillnest
{

namespace
{

/// A tile or, behind the tiles in number, a heading.
class CellAccess : public QAccessibleInterface, public QAccessibleActionInterface
{
public:
    CellAccess(AppGrid *grid, int index) : m_grid(grid), m_index(index) { }

    bool isValid() const override
    {
        return m_grid && m_index < m_grid->count() + static_cast<int>(m_grid->headings().size());
    }
    QObject *object() const override { return nullptr; }
    QAccessibleInterface *parent() const override { return QAccessible::queryAccessibleInterface(m_grid); }
    QAccessibleInterface *child(int) const override { return nullptr; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }

    QString text(QAccessible::Text kind) const override
    {
        if (!isValid())
            return {};
        if (isHeading())
            return kind == QAccessible::Name ? heading().text : QString();
        if (kind == QAccessible::Name)
            return m_grid->tile(m_index).name();
        return kind == QAccessible::Description ? AppTile::spoken(m_grid->marksOf(m_index)) : QString();
    }
    void setText(QAccessible::Text, const QString &) override { }

    QRect rect() const override
    {
        if (!isValid())
            return {};
        const auto area = isHeading() ? heading().area : m_grid->tileRect(m_index);
        return {m_grid->mapToGlobal(area.topLeft()), area.size()};
    }

    QAccessible::Role role() const override
    {
        return isValid() && isHeading() ? QAccessible::Heading : QAccessible::ListItem;
    }

    QAccessible::State state() const override
    {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        state.invisible = !m_grid->isVisible();
        state.offscreen
            = m_grid->visibleRegion().intersected(isHeading() ? heading().area : m_grid->tileRect(m_index)).isEmpty();
        if (isHeading())
            return state;
        const auto marks = m_grid->marksOf(m_index);
        state.focusable = true;
        state.selectable = true;
        state.focused = m_grid->hasFocus() && m_grid->current() == m_index;
        state.selected = m_grid->current() == m_index;
        state.busy = marks.launching;
        state.active = marks.running;
        return state;
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        const bool acts = type == QAccessible::ActionInterface && isValid() && !isHeading();
        return acts ? static_cast<QAccessibleActionInterface *>(this) : nullptr;
    }
    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    void doAction(const QString &name) override
    {
        if (!isValid() || isHeading())
            return;
        if (name == pressAction()) {
            m_grid->open(m_index);
        } else if (name == setFocusAction()) {
            m_grid->setFocus(Qt::OtherFocusReason);
            m_grid->setCurrent(m_index);
        }
    }
    QStringList keyBindingsForAction(const QString &name) const override
    {
        return name == pressAction() ? QStringList{QStringLiteral("Return")} : QStringList();
    }

private:
    bool isHeading() const { return m_index >= m_grid->count(); }
    const AppGrid::Heading &heading() const
    {
        return m_grid->headings()[static_cast<std::size_t>(m_index - m_grid->count())];
    }

    const QPointer<AppGrid> m_grid;
    const int m_index;
};

class GridAccess : public QAccessibleWidget
{
public:
    explicit GridAccess(AppGrid *grid) : QAccessibleWidget(grid, QAccessible::List) { }
    ~GridAccess() override { forget(); }

    int childCount() const override { return grid()->count() + static_cast<int>(grid()->headings().size()); }
    QAccessibleInterface *child(int index) const override
    {
        if (index < 0 || index >= childCount())
            return nullptr;
        if (m_cells.size() <= static_cast<std::size_t>(index))
            m_cells.resize(static_cast<std::size_t>(index) + 1, 0);
        auto &id = m_cells[static_cast<std::size_t>(index)];
        if (id == 0)
            id = QAccessible::registerAccessibleInterface(new CellAccess(grid(), index));
        return QAccessible::accessibleInterface(id);
    }
    int indexOfChild(const QAccessibleInterface *wanted) const override
    {
        for (std::size_t i = 0; i < m_cells.size(); ++i) {
            if (m_cells[i] != 0 && QAccessible::accessibleInterface(m_cells[i]) == wanted)
                return static_cast<int>(i);
        }
        return -1;
    }
    QAccessibleInterface *childAt(int x, int y) const override
    {
        const auto index = grid()->tileAt(grid()->mapFromGlobal(QPoint(x, y)));
        return index ? child(*index) : nullptr;
    }
    QAccessibleInterface *focusChild() const override
    {
        return grid()->hasFocus() && grid()->current() ? child(*grid()->current()) : nullptr;
    }

    void forget()
    {
        for (const auto id : m_cells) {
            if (id != 0)
                QAccessible::deleteAccessibleInterface(id);
        }
        m_cells.clear();
    }

private:
    AppGrid *grid() const { return static_cast<AppGrid *>(widget()); }

    mutable std::vector<QAccessible::Id> m_cells;
};

QAccessibleInterface *makeAccess(const QString &, QObject *object)
{
    auto *grid = qobject_cast<AppGrid *>(object);
    return grid ? new GridAccess(grid) : nullptr;
}

void tell(AppGrid &grid, int index, QAccessible::Event type)
{
    if (!QAccessible::isActive())
        return;
    QAccessibleEvent event(&grid, type);
    event.setChild(index);
    QAccessible::updateAccessibility(&event);
}

} // namespace

void installAppGridAccess()
{
    // The toolkit takes the same factory once, however often it is given.
    QAccessible::installFactory(makeAccess);
}

void appGridRebuilt(AppGrid &grid)
{
    if (!QAccessible::isActive())
        return;
    if (auto *access = dynamic_cast<GridAccess *>(QAccessible::queryAccessibleInterface(&grid)))
        access->forget();
    QAccessibleEvent event(&grid, QAccessible::ObjectReorder);
    QAccessible::updateAccessibility(&event);
}

void appGridFocused(AppGrid &grid, int index)
{
    tell(grid, index, QAccessible::Focus);
}

void appGridTileChanged(AppGrid &grid, int index)
{
    tell(grid, index, QAccessible::DescriptionChanged);
}

} // namespace quillnest
