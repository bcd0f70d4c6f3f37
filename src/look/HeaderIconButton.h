#pragma once

#include "look/SymbolButton.h"

namespace quillnest
{

/// A symbol button of the size that the launcher's bars and cards have.
class HeaderIconButton : public SymbolButton
{
    Q_OBJECT

public:
    static constexpr int side = 28;

    /// `help` is the tool tip and what screen readers say.
    HeaderIconButton(const Look &look, const QString &symbol, const QString &help, QWidget *parent = nullptr);
};

} // namespace quillnest
