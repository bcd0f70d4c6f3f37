#pragma once

#include "look/LiveLook.h"
#include "windows/WindowDrag.h"

#include <QWidget>

class QLabel;

namespace quillnest
{

class SymbolButton;

/// The bar at the top of an app window, 36 points high. Dragging it moves the window.
class HeaderView : public QWidget
{
    Q_OBJECT

public:
    HeaderView(const Platform &platform, const QString &title, QWidget *parent = nullptr);

    void setPinned(bool on);
    /// Buttons whose feature is not there are not shown.
    void setShadeAvailable(bool on);
    void setCaptureAvailable(bool on);

Q_SIGNALS:
    void homeRequested();
    void backRequested();
    /// With the button that a menu belongs to.
    void captureMenuRequested(QWidget *button);
    void shadeRequested();
    void sizeMenuRequested(QWidget *button);
    void pinToggled();
    void hideRequested();
    void closeRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    SymbolButton *addButton(const QString &symbol, const QString &toolTip);

    LiveLook m_look;
    WindowDrag m_drag;
    QLabel *m_titleLabel = nullptr;
    SymbolButton *m_captureButton = nullptr;
    SymbolButton *m_shadeButton = nullptr;
    SymbolButton *m_sizeButton = nullptr;
    SymbolButton *m_pinButton = nullptr;
};

} // namespace quillnest
