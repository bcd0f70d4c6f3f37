#pragma once

#include "device/ScreenModel.h"

#include <QImage>
#include <QRect>

namespace standin
{

/// Keeps a display's picture and paints only what has changed: the still layer when the model has, otherwise the
/// places where something moves or has just moved. Belongs to one thread.
class ScreenRenderer
{
public:
    /// Brings the picture up to date and returns its changed parts. `revision` tells when the still layer is old.
    QList<QRect> render(const ScreenModel &model, quint64 revision);
    const QImage &picture() const { return m_picture; }

    QImage renderWhole(const ScreenModel &model);

private:
    QImage m_still;
    QImage m_picture;
    QList<QRect> m_moved; ///< where the last frame's moving things are
    quint64 m_revision = 0;
};

} // namespace standin
