#include "windows/AndroidPlayerView.h"

#include "base/QuillnestLayout.h"
#include "look/ElidedLabel.h"
#include "look/Fonts.h"
#include "look/SymbolButton.h"
#include "windows/AndroidAppPanel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quillnest
{

namespace
{

/// The bar at the top. Dragging it moves the window.
class DragArea : public QWidget
{
public:
    DragArea(const Look &look, QWidget *parent) : QWidget(parent), m_look(look)
    {
        setFixedHeight(QuillnestLayout::headerHeight);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        const auto &colors = m_look.colors;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath shape;
        if (window()->testAttribute(Qt::WA_TranslucentBackground)) {
            // The lower corners lie behind the picture.
            shape.addRoundedRect(
                QRectF(rect()).adjusted(0, 0, 0, windowCornerRadius), windowCornerRadius, windowCornerRadius);
        } else {
            shape.addRect(rect());
        }
        painter.fillPath(shape, colors.headerBackground);
        painter.fillRect(QRectF(0, height() - 1, width(), 1), colors.separator);
    }

    void mousePressEvent(QMouseEvent *event) override { m_drag.pressed(*event); }

    void mouseMoveEvent(QMouseEvent *event) override { m_drag.move(*window(), *event); }

private:
    WindowDrag m_drag;
    const Look &m_look;
};

// Of a rectangle at the origin the right and the lower edge are no part.

bool isInside(QPointF point, QSizeF size)
{
    return point.x() >= 0 && point.y() >= 0 && point.x() < size.width() && point.y() < size.height();
}

QPointF clamped(QPointF point, QSizeF size)
{
    const auto inside = [](double value, double length) { return std::clamp(value, 0.0, std::nextafter(length, 0)); };
    return {inside(point.x(), size.width()), inside(point.y(), size.height())};
}

/// The device's display, as large as it fits, in the middle.
class MirrorArea : public QWidget
{
public:
    MirrorArea(const Look &look, AndroidMirrorModel &mirror, QWidget *parent)
        : QWidget(parent), m_look(look), m_mirror(mirror)
    {
        // Without it the first button of the header would have the keyboard, and its ring.
        setFocusPolicy(Qt::ClickFocus);
        setAccessibleName(QStringLiteral("Android display"));
        setAccessibleDescription(m_mirror.status());
        connect(&m_mirror, &AndroidMirrorModel::changed, this, [this] {
            if (accessibleDescription() != m_mirror.status())
                setAccessibleDescription(m_mirror.status());
            update();
        });
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        const auto &colors = m_look.colors;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath shape;
        if (window()->testAttribute(Qt::WA_TranslucentBackground)) {
            // The upper corners lie behind the header.
            shape.addRoundedRect(
                QRectF(rect()).adjusted(0, -windowCornerRadius, 0, 0), windowCornerRadius, windowCornerRadius);
            painter.setClipPath(shape);
        } else {
            shape.addRect(rect());
        }
        painter.fillPath(shape, colors.windowBackground);
        if (const auto &frame = m_mirror.frame())
            drawPicture(painter, *frame);
        else
            drawStatus(painter, colors);
    }

    void mousePressEvent(QMouseEvent *event) override
    {
        const auto place = pictureRect();
        m_pressed = event->position() - place.topLeft();
        m_isPressed = event->button() == Qt::LeftButton && isInside(m_pressed, place.size());
    }

    void mouseReleaseEvent(QMouseEvent *event) override
    {
        if (event->button() != Qt::LeftButton || !std::exchange(m_isPressed, false))
            return;
        const auto place = pictureRect();
        if (place.isEmpty())
            return;
        const auto released = event->position() - place.topLeft();
        const auto moved = released - m_pressed;
        // A hand isn't quite still while it clicks.
        constexpr double swipeDistance = 10;
        if (std::hypot(moved.x(), moved.y()) < swipeDistance) {
            m_mirror.tap(m_pressed, place.size());
        } else {
            // The pointer may have left the display, where the finger ends at its edge.
            const auto end = clamped(released, place.size());
            m_mirror.swipe(m_pressed, end, place.size());
        }
    }

private:
    /// Where the picture is; empty without one.
    QRectF pictureRect() const
    {
        if (!m_mirror.frame())
            return {};
        const auto size = QSizeF(m_mirror.frame()->size()).scaled(QSizeF(this->size()), Qt::KeepAspectRatio);
        QRectF place(QPointF(), size);
        place.moveCenter(QRectF(rect()).center());
        return place;
    }

    void drawPicture(QPainter &painter, const QImage &frame)
    {
        // Made once for each picture and size: the window system may ask for the same again.
        const auto place = pictureRect();
        const auto pixels = (place.size() * devicePixelRatioF()).toSize();
        if (m_scaledKey != frame.cacheKey() || m_scaled.size() != pixels) {
            m_scaled = frame.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
            m_scaledKey = frame.cacheKey();
        }
        painter.drawImage(place, m_scaled);
    }

    void drawStatus(QPainter &painter, const Palette &colors) const
    {
        // The outline of a device, and below it what it is waited for.
        const QSizeF size(34, 58);
        QRectF device(QPointF(), size);
        device.moveCenter(QRectF(rect()).center() - QPointF(0, 26));
        painter.setPen(QPen(colors.tertiaryLabel, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(device, 7, 7);
        painter.setPen(QPen(colors.tertiaryLabel, 2, Qt::SolidLine, Qt::RoundCap));
        const QPointF foot(device.center().x(), device.bottom() - 7);
        painter.drawLine(foot - QPointF(5, 0), foot + QPointF(5, 0));

        painter.setFont(interfaceFont(13));
        painter.setPen(colors.secondaryLabel);
        const QRectF text(16, device.bottom() + 16, width() - 32, height() - device.bottom() - 16);
        painter.drawText(text, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, m_mirror.status());
    }

    const Look &m_look;
    AndroidMirrorModel &m_mirror;
    QImage m_scaled;
    qint64 m_scaledKey = 0;
    bool m_isPressed = false;
    QPointF m_pressed;
};

} // namespace

AndroidPlayerView::AndroidPlayerView(const WindowServices &services, const QString &title, QWidget *parent)
    : QWidget(parent), m_look(services.platform), m_mirror(services.platform, services.log)
{
    auto *header = new DragArea(m_look, this);
    auto *bar = new QHBoxLayout(header);
    bar->setContentsMargins(10, 0, 10, 0);
    bar->setSpacing(6);
    const auto addButton = [this, header, bar](const char *symbol, const char *name) {
        auto *button = new SymbolButton(m_look, QLatin1String(symbol), QLatin1String(name), header);
        bar->addWidget(button);
        return button;
    };

    const auto *library = addButton("chevron.backward", "Back to app library");
    connect(library, &QAbstractButton::clicked, this, &AndroidPlayerView::closeRequested);
    m_titleLabel = new ElidedLabel(title, header);
    m_titleLabel->setFont(interfaceFont(13, QFont::DemiBold));
    m_titleLabel->setTextFormat(Qt::PlainText);
    m_titleLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_titleLabel->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    bar->addWidget(m_titleLabel);
    bar->addStretch(1);
    const auto *back = addButton("arrow.uturn.backward", "Android Back");
    connect(back, &QAbstractButton::clicked, this, [this] { m_mirror.key(AndroidMirrorModel::backKey); });
    m_pinButton = addButton("pin", "Keep window on top");
    connect(m_pinButton, &QAbstractButton::clicked, this, &AndroidPlayerView::togglePin);

    auto *stack = new QVBoxLayout(this);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(0);
    stack->addWidget(header);
    auto *display = new MirrorArea(m_look, m_mirror, this);
    stack->addWidget(display, 1);
    display->setFocus();

    const auto applyColors = [this] {
        auto colors = m_titleLabel->palette();
        colors.setColor(QPalette::WindowText, m_look.colors.label);
        m_titleLabel->setPalette(colors);
        for (auto *child : findChildren<QWidget *>())
            child->update();
    };
    applyColors();
    connect(&m_look, &LiveLook::changed, this, applyColors);
}

QString AndroidPlayerView::title() const
{
    return m_titleLabel->text();
}

void AndroidPlayerView::togglePin()
{
    m_isPinned = !m_isPinned;
    m_pinButton->setSymbol(m_isPinned ? QStringLiteral("pin.fill") : QStringLiteral("pin"), m_isPinned);
    if (auto *panel = qobject_cast<AndroidAppPanel *>(window()))
        panel->setFloating(m_isPinned);
    else if (auto *handle = window()->windowHandle())
        handle->setFlag(Qt::WindowStaysOnTopHint, m_isPinned);
}

void AndroidPlayerView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // The window system's own hiding and showing, as of another desktop, changes nothing.
    if (!event->spontaneous())
        m_mirror.start();
}

void AndroidPlayerView::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous())
        m_mirror.stop();
}

} // namespace quillnest
