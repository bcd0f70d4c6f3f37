#pragma once

#include "look/Look.h"

#include <QAbstractButton>

namespace quillnest
{

/// A plain button that shows a symbol; a soft rounded ground comes up under the pointer.
class HeaderIconButton : public QAbstractButton
{
    Q_OBJECT

public:
    static constexpr int side = 28;

    /// `help` is the tool tip and what screen readers say.
    HeaderIconButton(
        const Platform &platform, const Look &look, const QString &symbol, const QString &help,
        QWidget *parent = nullptr);

    void setSymbol(const QString &symbol);
    /// In points; 16 unless set.
    void setSymbolSize(int points) { m_points = points; }
    QSize sizeHint() const override { return {side, side}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    const Platform &m_platform;
    const Look &m_look;
    QString m_symbol;
    int m_points = 16;
    bool m_hovering = false;
};

} // namespace quillnest
