#include "look/Card.h"

#include "look/ContinuousCorners.h"
#include "look/Control.h"
#include "look/Fonts.h"
#include "look/KitAccess.h"

#include <QPainter>
#include <QStyle>
#include <QVBoxLayout>

namespace quillnest
{

namespace
{
constexpr int titleLine = 18;
constexpr int symbolSize = 12;
constexpr int symbolGap = 6;
} // namespace

Card::Card(const Look &look, const QString &title, QWidget *parent) : Card(look, title, Form(), parent) { }

Card::Card(const Look &look, const QString &title, const Form &form, QWidget *parent)
    : QWidget(parent), m_look(look), m_title(title), m_form(form), m_content(new QVBoxLayout(this))
{
    installKitAccess();
    setAccessibleName(title);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_content->setContentsMargins(form.padding, form.padding + titleHeight(), form.padding, form.padding);
    m_content->setSpacing(form.spacing);
}

int Card::titleHeight() const
{
    return m_title.isEmpty() ? 0 : titleLine + m_form.spacing;
}

void Card::setSymbol(const QString &symbol)
{
    m_symbol = symbol;
    update();
}

void Card::paintEvent(QPaintEvent *)
{
    const auto &colors = m_look.colors;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // On a picture the surface alone sets it off.
    painter.setPen(m_look.hasWallpaper ? QPen(Qt::NoPen) : QPen(colors.separator, 1));
    painter.setBrush(colors.tile);
    painter.drawPath(continuousRectangle(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), m_form.radius));
    if (m_title.isEmpty())
        return;
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    const int in = m_form.padding + m_form.titleInset;
    auto line = QRect(in, m_form.padding, width() - 2 * in, titleLine);
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    if (!m_symbol.isEmpty()) {
        const int left = mirrored ? line.left() + line.width() - symbolSize : line.left();
        painter.drawPixmap(
            QPointF(left, line.top() + (titleLine - symbolSize) / 2),
            m_look.symbol(m_symbol, symbolSize, colors.secondaryLabel, painter));
        constexpr int taken = symbolSize + symbolGap;
        line.adjust(mirrored ? 0 : taken, 0, mirrored ? -taken : 0, 0);
    }
    painter.setFont(interfaceFont(12, QFont::DemiBold));
    painter.setPen(colors.secondaryLabel);
    painter.drawText(
        line, QStyle::visualAlignment(layoutDirection(), Qt::AlignVCenter | Qt::AlignLeft),
        painter.fontMetrics().elidedText(m_title, Qt::ElideRight, line.width()));
}

} // namespace quillnest
