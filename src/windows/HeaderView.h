#pragma once

#include "platform/Platform.h"

#include <QWidget>

#include <functional>

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

    std::function<void()> onBack;
    std::function<void()> onPin;
    std::function<void()> onHide;
    std::function<void()> onClose;
    std::function<void()> onHome;
    /// With the button that a menu belongs to.
    std::function<void(QWidget *)> onSizeMenu;
    std::function<void()> onShade;
    std::function<void(QWidget *)> onCapture;

    void setPinned(bool on);
    /// Buttons whose feature has no user yet are shown disabled.
    void setShadeAvailable(bool on);
    void setCaptureAvailable(bool on);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    SymbolButton *addButton(const QString &symbol, const QString &toolTip);

    const Platform &m_platform;
    QLabel *m_titleLabel = nullptr;
    SymbolButton *m_captureButton = nullptr;
    SymbolButton *m_shadeButton = nullptr;
    SymbolButton *m_sizeButton = nullptr;
    SymbolButton *m_pinButton = nullptr;
};

} // namespace quillnest
