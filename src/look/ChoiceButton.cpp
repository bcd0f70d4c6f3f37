#include "look/ChoiceButton.h"

#include "look/Fonts.h"

#include <QKeyEvent>
#include <QPainter>

namespace quillnest
{

ChoiceButton::ChoiceButton(const Look &look, const QString &name, Sample sample, QWidget *parent)
    : QAbstractButton(parent), m_look(look), m_sample(std::move(sample))
{
    setCheckable(true);
    setAutoExclusive(true);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setName(name);
}

void ChoiceButton::setName(const QString &name)
{
    m_name = name;
    setAccessibleName(name);
    update();
}

void ChoiceButton::paintEvent(QPaintEvent *)
{
    const auto &colors = m_look.colors;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto sample = QRectF(rect()).adjusted(4, 4, -4, -24);
    m_sample(painter, sample);
    painter.setBrush(Qt::NoBrush);
    if (isChecked() || hasFocus() || underMouse()) {
        const bool strong = isChecked() || hasFocus();
        painter.setPen(QPen(strong ? colors.controlAccent : colors.separator, strong ? 2 : 1));
        painter.drawRoundedRect(sample.adjusted(-2, -2, 2, 2), 11, 11);
    }
    if (hasFocus()) {
        painter.setPen(QPen(colors.controlAccent, 1));
        painter.drawRoundedRect(sample.adjusted(-3.5, -3.5, 3.5, 3.5), 12.5, 12.5);
    }
    auto font = interfaceFont(11, isChecked() ? QFont::DemiBold : QFont::Normal);
    if (QFontMetrics(font).horizontalAdvance(m_name) > width())
        font.setStretch(90);
    painter.setFont(font);
    painter.setPen(isChecked() ? colors.label : colors.secondaryLabel);
    const QRectF text(0, height() - 18, width(), 16);
    painter.drawText(text, Qt::AlignCenter, painter.fontMetrics().elidedText(m_name, Qt::ElideRight, width()));
}

void ChoiceButton::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

} // namespace quillnest
