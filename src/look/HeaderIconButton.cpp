#include "look/HeaderIconButton.h"

namespace quillnest
{

HeaderIconButton::HeaderIconButton(const Look &look, const QString &symbol, const QString &help, QWidget *parent)
    : SymbolButton(look, symbol, help, {.size = {side, side}, .ground = {side, side}, .radius = 8}, parent)
{
}

} // namespace quillnest
