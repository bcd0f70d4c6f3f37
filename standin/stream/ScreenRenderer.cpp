#include "stream/ScreenRenderer.h"

#include "device/Display.h"
#include "stream/ScreenPainter.h"

#include <QPainter>

namespace standin
{

QList<QRect> ScreenRenderer::render(const ScreenModel &model, quint64 revision)
{
    const ScreenPainter screen(model);
    const QRect whole(QPoint(), model.size);
    QList<QRect> changed = m_moved;
    if (m_still.size() != model.size || m_revision != revision) {
        if (m_still.size() != model.size) {
            m_still = QImage(model.size, QImage::Format_RGB32);
            m_picture = QImage(model.size, QImage::Format_RGB32);
        }
        QPainter painter(&m_still);
        screen.paintStill(painter);
        m_revision = revision;
        changed = {whole};
    }
    const qint64 now = monotonicMilliseconds();
    m_moved = screen.movingParts(now);
    QPainter painter(&m_picture);
    for (const QRect &part : qAsConst(changed))
        painter.drawImage(part.topLeft(), m_still, part);
    for (const QRect &part : qAsConst(m_moved))
        painter.drawImage(part.topLeft(), m_still, part);
    screen.paintMoving(painter, QDateTime::currentDateTimeUtc(), now);
    if (changed != QList<QRect>{whole})
        changed += m_moved;
    return changed;
}

QImage ScreenRenderer::renderWhole(const ScreenModel &model)
{
    render(model, m_revision + 1);
    return m_picture;
}

} // namespace standin
