#include "look/PopUpPicker.h"

#include "look/Fonts.h"
#include "look/KitAccess.h"
#include "look/PlainWords.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace quillnest
{

namespace
{
constexpr int pickerHeight = 30;
constexpr int margin = 12;
constexpr int arrowsWidth = 8;
constexpr int gap = 8;
constexpr double radius = 7;
/// What stands beside the title.
constexpr int taken = 2 * margin + gap + arrowsWidth;
} // namespace

PopUpPicker::PopUpPicker(const Look &look, const QString &name, QWidget *parent) : Control(look, name, parent)
{
    installKitAccess();
    setFont(interfaceFont(13));
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    connect(this, &QAbstractButton::clicked, this, &PopUpPicker::openMenu);
}

void PopUpPicker::setEntries(std::vector<Entry> entries)
{
    m_entries = std::move(entries);
    updateGeometry();
    update();
}

void PopUpPicker::setCurrent(const QVariant &value)
{
    if (m_current == value)
        return;
    m_current = value;
    update();
    tellKitValue(*this, currentTitle());
}

QString PopUpPicker::currentTitle() const
{
    const auto found = std::find_if(
        m_entries.begin(), m_entries.end(), [this](const Entry &entry) { return entry.value == m_current; });
    return found == m_entries.end() ? QString() : found->title;
}

QSize PopUpPicker::sizeHint() const
{
    int widest = 0;
    for (const auto &entry : m_entries)
        widest = std::max(widest, fontMetrics().horizontalAdvance(entry.title));
    return {widest + taken, pickerHeight};
}

QSize PopUpPicker::minimumSizeHint() const
{
    return {taken + 40, pickerHeight};
}

void PopUpPicker::openMenu()
{
    if (m_menu || m_entries.empty())
        return;
    m_menu = new QMenu(this);
    m_menu->setAttribute(Qt::WA_DeleteOnClose);
    m_menu->setFont(font());
    m_menu->setMinimumWidth(width());
    QAction *shown = nullptr;
    for (const auto &entry : m_entries) {
        auto *action = m_menu->addAction(plainMenuTitle(entry.title));
        action->setCheckable(true);
        action->setEnabled(entry.isEnabled);
        action->setChecked(entry.value == m_current);
        if (entry.value == m_current)
            shown = action;
        connect(action, &QAction::triggered, this, [this, value = entry.value] { choose(value); });
    }
    connect(m_menu, &QMenu::aboutToHide, this, [this] {
        setDown(false);
        m_menu.clear();
    });
    // The value's own entry comes to lie over the button, as near as the screen allows.
    const auto place = shown ? m_menu->actionGeometry(shown) : QRect();
    const int top = shown ? (height() - place.height()) / 2 - place.top() : height() + 2;
    setDown(true);
    m_menu->popup(mapToGlobal(QPoint(isMirrored() ? width() - m_menu->sizeHint().width() : 0, top)));
    if (shown)
        m_menu->setActiveAction(shown);
}

void PopUpPicker::choose(const QVariant &value)
{
    if (m_current == value)
        return;
    setCurrent(value);
    Q_EMIT picked(value);
}

void PopUpPicker::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down)
        openMenu();
    else
        Control::keyPressEvent(event);
}

void PopUpPicker::hideEvent(QHideEvent *event)
{
    if (m_menu)
        m_menu->close();
    Control::hideEvent(event);
}

void PopUpPicker::paint(QPainter &painter)
{
    const auto &colors = look().colors;
    const auto area = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
    painter.setPen(QPen(colors.separator, 1));
    painter.setBrush(colors.field);
    painter.drawRoundedRect(area, radius, radius);
    paintWash(painter, area, radius);

    const int room = width() - taken;
    const int left = isMirrored() ? margin + arrowsWidth + gap : margin;
    painter.setPen(colors.label);
    painter.drawText(
        QRect(left, 0, room, height()), QStyle::visualAlignment(layoutDirection(), Qt::AlignVCenter | Qt::AlignLeft),
        painter.fontMetrics().elidedText(currentTitle(), Qt::ElideRight, room));

    const double middle = (isMirrored() ? margin : width() - margin - arrowsWidth) + arrowsWidth / 2.0;
    painter.setPen(QPen(colors.secondaryLabel, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (const int way : {-1, 1}) {
        const QPointF tip(middle, height() / 2.0 + way * 6.5);
        const QPointF points[]{tip + QPointF(-3, -3 * way), tip, tip + QPointF(3, -3 * way)};
        painter.drawPolyline(points, 3);
    }
}

} // namespace quillnest
