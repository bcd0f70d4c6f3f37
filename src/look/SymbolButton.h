#pragma once

#include "platform/Platform.h"

#include <QAbstractButton>
#include <QString>

namespace quillnest
{

/// A borderless button that shows a symbol in one colour, with hover, pressed and focus states.
class SymbolButton : public QAbstractButton
{
    Q_OBJECT

public:
    /// `name` is what screen readers say, and the tool tip unless another one is set.
    SymbolButton(const Platform &platform, const QString &symbol, const QString &name, QWidget *parent = nullptr);

    /// The symbol in the accent colour, or in the secondary label's.
    void setSymbol(const QString &symbol, bool accented);

    QSize sizeHint() const override { return {22, 28}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    const Platform &m_platform;
    QString m_symbol;
    bool m_accented = false;
    bool m_hovered = false;
};

} // namespace quillnest
