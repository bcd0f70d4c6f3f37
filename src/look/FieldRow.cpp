#include "look/FieldRow.h"

#include "look/Control.h"
#include "look/Fonts.h"
#include "look/SettingRow.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace quillnest
{

namespace
{
constexpr int gap = 12;
constexpr int leastHeight = 38;
constexpr int leastWords = 72;
/// As a switch's row has, so that rows of both kinds stand in one line.
constexpr int inset = SettingRow::inset;
} // namespace

FieldRow::FieldRow(const Look &look, const QString &words, QWidget *control, QWidget *parent)
    : QWidget(parent), m_look(look), m_words(words), m_control(control)
{
    control->setParent(this);
    if (control->accessibleName().isEmpty())
        control->setAccessibleName(words);
    setFont(interfaceFont(13));
    auto policy = QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int FieldRow::controlWidth(int width) const
{
    const int most = std::max(m_control->minimumSizeHint().width(), width - 2 * inset - gap - leastWords);
    return std::min(m_control->sizeHint().width(), most);
}

QRect FieldRow::wordsArea(QSize size) const
{
    const int taken = controlWidth(size.width()) + gap;
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    return {inset + (mirrored ? taken : 0), 0, std::max(leastWords, size.width() - 2 * inset - taken), size.height()};
}

int FieldRow::heightForWidth(int width) const
{
    const auto room = QRect(0, 0, wordsArea(QSize(width, 0)).width(), 1000);
    const int words = fontMetrics().boundingRect(room, Qt::TextWordWrap, m_words).height();
    return std::max({leastHeight, words + 16, m_control->sizeHint().height() + 8});
}

void FieldRow::place()
{
    const int wide = controlWidth(width());
    const int high = m_control->sizeHint().height();
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    m_control->setGeometry(mirrored ? inset : width() - inset - wide, (height() - high) / 2, wide, high);
    update();
}

void FieldRow::resizeEvent(QResizeEvent *)
{
    place();
}

void FieldRow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LayoutDirectionChange)
        place();
    QWidget::changeEvent(event);
}

void FieldRow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    painter.setFont(font());
    painter.setPen(m_look.colors.label);
    const auto side = QStyle::visualAlignment(layoutDirection(), Qt::AlignVCenter | Qt::AlignLeft);
    painter.drawText(wordsArea(size()), static_cast<int>(side) | Qt::TextWordWrap, m_words);
}

} // namespace quillnest
