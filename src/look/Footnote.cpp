#include "look/Footnote.h"

#include "look/Control.h"
#include "look/Fonts.h"
#include "look/KitAccess.h"
#include "look/ThemeColors.h"

#include <QPainter>
#include <QStyle>

namespace quillnest
{

Footnote::Footnote(const Look &look, const QString &words, Tone tone, QWidget *parent)
    : QWidget(parent), m_look(look), m_tone(tone)
{
    installKitAccess();
    setFont(interfaceFont(11));
    auto policy = QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setWords(words);
}

void Footnote::setWords(const QString &words)
{
    m_words = words;
    setAccessibleName(words);
    updateGeometry();
    update();
}

QSize Footnote::sizeHint() const
{
    constexpr int usual = 328;
    return {200, heightForWidth(usual)};
}

int Footnote::heightForWidth(int width) const
{
    return fontMetrics().boundingRect(QRect(0, 0, width, 10000), Qt::TextWordWrap, m_words).height();
}

void Footnote::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    painter.setFont(font());
    painter.setPen(m_tone == Tone::attention ? QuillnestTheme::ember() : m_look.colors.secondaryLabel);
    const auto side = QStyle::visualAlignment(layoutDirection(), Qt::AlignTop | Qt::AlignLeft);
    painter.drawText(rect(), static_cast<int>(side) | Qt::TextWordWrap, m_words);
}

} // namespace quillnest
