#include "look/SettingRow.h"

#include "look/Fonts.h"

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

SettingRow::SettingRow(const Look &look, const QString &words, QWidget *parent) : Control(look, words, parent)
{
    setCheckable(true);
    setFont(interfaceFont(13));
    setFocusPolicy(Qt::TabFocus);
    auto policy = QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int SettingRow::heightForWidth(int width) const
{
    const auto text = fontMetrics().boundingRect(
        QRect(0, 0, std::max(40, width - switchWidth - gap - 2 * inset), 1000), Qt::TextWordWrap, name());
    return std::max(leastHeight, text.height() + 16);
}

void SettingRow::paint(QPainter &painter)
{
    paintWash(painter, rect(), 8);
    painter.setPen(look().colors.label);
    const auto inside = rect().adjusted(inset, 0, -inset, 0);
    constexpr int taken = switchWidth + gap;
    const auto side = QStyle::visualAlignment(layoutDirection(), Qt::AlignVCenter | Qt::AlignLeft);
    painter.drawText(
        isMirrored() ? inside.adjusted(taken, 0, 0, 0) : inside.adjusted(0, 0, -taken, 0),
        static_cast<int>(side) | Qt::TextWordWrap, name());
    const int left = isMirrored() ? inside.left() + 1 : inside.left() + inside.width() - switchWidth - 1;
    paintSwitch(painter, QRectF(left, (height() - switchHeight) / 2, switchWidth, switchHeight));
}

void SettingRow::paintSwitch(QPainter &painter, const QRectF &track) const
{
    auto off = look().colors.label;
    off.setAlphaF(look().isDark ? 0.24F : 0.18F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isChecked() ? look().colors.controlAccent : off);
    painter.drawRoundedRect(track, switchHeight / 2.0, switchHeight / 2.0);
    constexpr double knob = switchHeight - 4;
    const double left = isChecked() != isMirrored() ? track.right() - knob - 2 : track.left() + 2;
    painter.setBrush(Qt::white);
    painter.drawEllipse(QRectF(left, track.top() + 2, knob, knob));
}

} // namespace quillnest
