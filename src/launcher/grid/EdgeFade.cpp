#include "launcher/grid/EdgeFade.h"

#include <QEvent>
#include <QLinearGradient>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>

namespace quillnest
{

namespace
{
constexpr int reach = 28;
} // namespace

EdgeFade::EdgeFade(QScrollArea &area, QWidget &whole, std::function<void(QPainter &)> ground)
    : QWidget(area.viewport()), m_area(area), m_whole(whole), m_ground(std::move(ground))
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    area.viewport()->installEventFilter(this);
    const auto *bar = area.verticalScrollBar();
    connect(bar, &QScrollBar::valueChanged, this, &EdgeFade::place);
    connect(bar, &QScrollBar::rangeChanged, this, &EdgeFade::place);
    place();
}

void EdgeFade::place()
{
    const auto room = m_area.viewport()->rect();
    const auto *bar = m_area.verticalScrollBar();
    setGeometry(0, room.height() - reach, room.width(), reach);
    setVisible(bar->value() < bar->maximum());
    raise();
}

bool EdgeFade::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize)
        place();
    return QWidget::eventFilter(watched, event);
}

void EdgeFade::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const double scale = painter.deviceTransform().m11();
    QPixmap ground((QSizeF(size()) * scale).toSize());
    ground.setDevicePixelRatio(scale);
    ground.fill(Qt::transparent);
    QPainter onGround(&ground);
    onGround.translate(-mapTo(&m_whole, QPoint()));
    m_ground(onGround);
    onGround.resetTransform();
    onGround.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    QLinearGradient fade(0, 0, 0, height());
    fade.setColorAt(0, Qt::transparent);
    fade.setColorAt(1, Qt::black);
    onGround.fillRect(rect(), fade);
    onGround.end();
    painter.drawPixmap(0, 0, ground);
}

} // namespace quillnest
