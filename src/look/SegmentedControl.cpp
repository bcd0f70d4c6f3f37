#include "look/SegmentedControl.h"

#include "look/KitAccess.h"
#include "look/Segment.h"

#include <QHBoxLayout>
#include <QPainter>

namespace quillnest
{

namespace
{
constexpr int inset = 2;
constexpr double radius = 8;
} // namespace

SegmentedControl::SegmentedControl(
    const Look &look, const QString &name, const std::vector<Page> &pages, QWidget *parent)
    : QWidget(parent), m_look(look)
{
    installKitAccess();
    setAccessibleName(name);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(inset, inset, inset, inset);
    row->setSpacing(2);
    for (const auto &page : pages) {
        const int index = count();
        auto *segment = new Segment(look, page.title, page.symbol, this);
        connect(segment, &QAbstractButton::clicked, this, [this, index] { choose(index); });
        connect(segment, &Segment::leftBy, this, [this, index](int key) { move(index, key); });
        row->addWidget(segment, 1);
        m_segments.push_back(segment);
    }
    setCurrent(0);
}

Segment &SegmentedControl::segment(int index) const
{
    return *m_segments.at(static_cast<std::size_t>(index));
}

void SegmentedControl::setCurrent(int index)
{
    if (index < 0 || index >= count())
        return;
    m_current = index;
    for (int i = 0; i < count(); ++i) {
        segment(i).setChecked(i == index);
        segment(i).setFocusPolicy(i == index ? Qt::TabFocus : Qt::NoFocus);
    }
}

void SegmentedControl::setPageEnabled(int index, bool on)
{
    segment(index).setEnabled(on);
}

void SegmentedControl::choose(int index)
{
    const bool isOther = index != m_current;
    // A click on the chosen one has taken its mark away.
    setCurrent(index);
    if (isOther)
        Q_EMIT chosen(index);
}

void SegmentedControl::move(int from, int key)
{
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const bool isForward = key == Qt::Key_Home || key == (mirrored ? Qt::Key_Left : Qt::Key_Right);
    const int step = isForward ? 1 : -1;
    int index = key == Qt::Key_Home ? 0 : key == Qt::Key_End ? count() - 1 : from + step;
    while (index >= 0 && index < count() && !segment(index).isEnabled())
        index += step;
    if (index < 0 || index >= count())
        return;
    choose(index);
    segment(index).setFocus(Qt::TabFocusReason);
}

void SegmentedControl::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    auto ground = m_look.colors.label;
    ground.setAlphaF(0.07F);
    painter.setBrush(ground);
    painter.drawRoundedRect(rect(), radius, radius);
}

} // namespace quillnest
