#include "look/KitAccess.h"

#include "look/Card.h"
#include "look/Footnote.h"
#include "look/PopUpPicker.h"
#include "look/Segment.h"
#include "look/SegmentedControl.h"

#include <QAccessibleWidget>
#include <QMenu>

namespace quillnest
{

namespace
{

/// A control that is pressed by one action.
class PressAccess : public QAccessibleWidget
{
public:
    PressAccess(Control *control, QAccessible::Role role) : QAccessibleWidget(control, role), m_control(*control) { }

    QStringList actionNames() const override
    {
        auto names = QAccessibleWidget::actionNames();
        if (m_control.isEnabled())
            names.prepend(action());
        return names;
    }
    void doAction(const QString &name) override
    {
        if (name != action())
            QAccessibleWidget::doAction(name);
        else if (m_control.isEnabled())
            m_control.click();
    }
    QStringList keyBindingsForAction(const QString &) const override { return {}; }

protected:
    virtual const QString &action() const { return pressAction(); }

private:
    Control &m_control;
};

class PickerAccess : public PressAccess
{
public:
    explicit PickerAccess(PopUpPicker *picker) : PressAccess(picker, QAccessible::ComboBox), m_picker(*picker) { }

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? m_picker.currentTitle() : PressAccess::text(kind);
    }
    QAccessible::State state() const override
    {
        auto state = PressAccess::state();
        state.hasPopup = true;
        state.expandable = true;
        state.expanded = m_picker.menu() && m_picker.menu()->isVisible();
        state.collapsed = !state.expanded;
        return state;
    }

protected:
    const QString &action() const override { return showMenuAction(); }

private:
    PopUpPicker &m_picker;
};

class SegmentAccess : public PressAccess
{
public:
    explicit SegmentAccess(Segment *segment) : PressAccess(segment, QAccessible::PageTab), m_segment(*segment) { }

    QAccessible::State state() const override
    {
        auto state = PressAccess::state();
        state.selectable = true;
        state.selected = m_segment.isChecked();
        return state;
    }

private:
    Segment &m_segment;
};

QAccessibleInterface *makeAccess(const QString &, QObject *object)
{
    if (auto *picker = qobject_cast<PopUpPicker *>(object))
        return new PickerAccess(picker);
    if (auto *segment = qobject_cast<Segment *>(object))
        return new SegmentAccess(segment);
    if (auto *segments = qobject_cast<SegmentedControl *>(object))
        return new QAccessibleWidget(segments, QAccessible::PageTabList);
    if (auto *card = qobject_cast<Card *>(object))
        return new QAccessibleWidget(card, QAccessible::Grouping);
    if (auto *footnote = qobject_cast<Footnote *>(object))
        return new QAccessibleWidget(footnote, QAccessible::StaticText);
    return nullptr;
}

} // namespace

void installKitAccess()
{
    // The toolkit takes the same factory once, however often it is given.
    QAccessible::installFactory(makeAccess);
}

void tellKitValue(PopUpPicker &picker, const QString &value)
{
    if (!QAccessible::isActive())
        return;
    QAccessibleValueChangeEvent event(&picker, value);
    QAccessible::updateAccessibility(&event);
}

} // namespace quillnest
