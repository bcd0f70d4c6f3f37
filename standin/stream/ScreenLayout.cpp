#include "stream/ScreenLayout.h"

#include <algorithm>

namespace standin
{

ScreenLayout::ScreenLayout(const ScreenModel &model) : scale(model.scale())
{
    const qreal margin = px(16);
    const qreal width = std::min(model.size.width() - 2 * margin, px(640)); // a tablet keeps a readable column
    const qreal left = (model.size.width() - width) / 2;
    const qreal inset = px(20);
    card = QRectF(left, px(16), width, px(188));
    icon = QRectF(left + inset, card.top() + inset, px(60), px(60));
    const qreal textLeft = icon.right() + px(14);
    const qreal textWidth = card.right() - inset - textLeft;
    title = QRectF(textLeft, icon.top() + px(4), textWidth, px(30));
    subtitle = QRectF(textLeft, title.bottom() + px(2), textWidth, px(18));
    dial = QRectF(card.right() - inset - px(56), card.bottom() - inset - px(56), px(56), px(56));
    clock = QRectF(left + inset, card.bottom() - inset - px(48), px(240), px(48));
    if (clock.right() > dial.left() - px(8))
        clock.setRight(dial.left() - px(8));
    chips = QRectF(left, card.bottom() + px(14), width, px(32));
    const auto lines = std::clamp<qsizetype>(model.text.count(QChar(u'\n')) + 1, 1, 4);
    field = QRectF(left, chips.bottom() + px(14), width, px(34) + px(22) * static_cast<qreal>(lines));
    list = QRectF(left, field.bottom() + px(14), width, model.size.height() - field.bottom() - px(14));
}

} // namespace standin
