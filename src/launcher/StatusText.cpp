#include "launcher/StatusText.h"

#include "look/FocusRing.h"
#include "look/Fonts.h"
#include "look/PlainWords.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>

namespace quillnest
{

StatusText::StatusText(const PanelLook &look, Pasteboard &pasteboard, QWidget *parent)
    : ElidedLabel(parent), m_look(look), m_pasteboard(pasteboard)
{
    setFont(interfaceFont(11));
    setTextFormat(Qt::PlainText);
    setFocusPolicy(Qt::TabFocus);
    setContentsMargins(inset, 0, inset, 0);
}

void StatusText::setWords(const QString &words)
{
    setText(words);
    setToolTip(plainToolTip(words));
}

void StatusText::copy()
{
    m_pasteboard.setString(text());
}

void StatusText::paintEvent(QPaintEvent *event)
{
    ElidedLabel::paintEvent(event);
    if (!hasFocus())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintFocusRing(painter, QRectF(rect()), 4, m_look.colors.controlAccent);
}

void StatusText::contextMenuEvent(QContextMenuEvent *event)
{
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu->addAction(QStringLiteral("Copy")), &QAction::triggered, this, &StatusText::copy);
    menu->popup(event->globalPos());
}

void StatusText::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy))
        copy();
    else
        ElidedLabel::keyPressEvent(event);
}

} // namespace quillnest
