#include "look/SettingRow.h"

#include "look/Fonts.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace quillnest
{

namespace
{
constexpr int switchWidth = 34;
constexpr int switchHeight = 20;
constexpr int gap = 16;
constexpr int leastHeight = 36;
} // namespace

SettingRow::SettingRow(const Look &look, const QString &words, QWidget *parent)
    : QAbstractButton(parent), m_look(look), m_words(words)
{
    setCheckable(true);
    setAccessibleName(words);
    setFont(interfaceFont(13));
    setFocusPolicy(Qt::TabFocus);
    auto policy = QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int SettingRow::heightForWidth(int width) const
{
    const auto text = fontMetrics().boundingRect(
        QRect(0, 0, std::max(40, width - switchWidth - gap), 1000), Qt::TextWordWrap, m_words);
    return std::max(leastHeight, text.height() + 16);
}

void SettingRow::paintEvent(QPaintEvent *)
{
    const auto &colors = m_look.colors;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    painter.setPen(colors.label);
    const auto text
        = mirrored ? rect().adjusted(switchWidth + gap, 0, 0, 0) : rect().adjusted(0, 0, -switchWidth - gap, 0);
    const auto side = QStyle::visualAlignment(layoutDirection(), Qt::AlignVCenter | Qt::AlignLeft);
    painter.drawText(text, static_cast<int>(side) | Qt::TextWordWrap, m_words);

    const QRectF track(
        mirrored ? 1 : width() - switchWidth - 1, (height() - switchHeight) / 2, switchWidth, switchHeight);
    auto off = colors.label;
    off.setAlphaF(m_look.isDark ? 0.24F : 0.18F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isChecked() ? colors.controlAccent : off);
    painter.drawRoundedRect(track, switchHeight / 2.0, switchHeight / 2.0);
    constexpr double knob = switchHeight - 4;
    const double left = isChecked() != mirrored ? track.right() - knob - 2 : track.left() + 2;
    painter.setBrush(Qt::white);
    painter.drawEllipse(QRectF(left, track.top() + 2, knob, knob));
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colors.controlAccent, 2));
        painter.drawRoundedRect(rect().adjusted(1, 1, -1, -1), 6, 6);
    }
}

void SettingRow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

} // namespace quillnest
