#pragma once

#include "look/Control.h"

namespace quillnest
{

/// A borderless button that shows a symbol in one colour on a ground that comes up under the pointer.
class SymbolButton : public Control
{
    Q_OBJECT

public:
    /// In points.
    struct Form {
        QSize size{22, 28};
        /// Of the ground, in the button's middle.
        QSize ground{22, 22};
        double radius = 5;
        int symbol = 16;
    };

    /// `name` is what screen readers say, and the tool tip unless another one is set.
    SymbolButton(const Look &look, const QString &symbol, const QString &name, QWidget *parent = nullptr);

    /// The symbol in the accent colour, or in the secondary label's.
    void setSymbol(const QString &symbol, bool accented = false);
    /// In points.
    void setSymbolSize(int points);
    QSize sizeHint() const override { return m_form.size; }

protected:
    SymbolButton(const Look &look, const QString &symbol, const QString &name, const Form &form, QWidget *parent);

    void paint(QPainter &painter) override;
    Ring ring() const override;

private:
    QRectF ground() const;

    Form m_form;
    QString m_symbol;
    bool m_accented = false;
};

} // namespace quillnest
