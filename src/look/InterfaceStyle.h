#pragma once

#include <QProxyStyle>

namespace quillnest
{

/// The toolkit's own style with what its menus lack: room, rounded highlights, and a tick where others draw a box.
class InterfaceStyle : public QProxyStyle
{
    Q_OBJECT

public:
    InterfaceStyle();

    void drawPrimitive(
        PrimitiveElement element, const QStyleOption *option, QPainter *painter, const QWidget *widget) const override;
    void drawControl(
        ControlElement element, const QStyleOption *option, QPainter *painter, const QWidget *widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override;
    QSize sizeFromContents(
        ContentsType type, const QStyleOption *option, const QSize &size, const QWidget *widget) const override;
    int styleHint(
        StyleHint hint, const QStyleOption *option, const QWidget *widget, QStyleHintReturn *result) const override;
};

} // namespace quillnest
