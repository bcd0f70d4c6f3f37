#pragma once

#include "device/ScreenModel.h"

#include <QRectF>

namespace standin
{

/// Where things are on the app's screen, in pixels. Made anew for every size; everything is laid out in
/// density-independent pixels and scaled once, here.
struct ScreenLayout {
    explicit ScreenLayout(const ScreenModel &model);

    qreal px(qreal dp) const { return dp * scale; }

    qreal scale;
    QRectF card; ///< the coloured head with icon, name and clock
    QRectF icon;
    QRectF title;
    QRectF subtitle;
    QRectF clock;
    QRectF dial; ///< the moving ring
    QRectF chips;
    QRectF field; ///< the text field
    QRectF list;
};

} // namespace standin
