#include "launcher/AppTile.h"

#include "windows/Palette.h"

#include <QKeyEvent>
#include <QLinearGradient>
#include <QPainter>
#include <QTextBoundaryFinder>

#include <array>
#include <cmath>

namespace quillnest
{

namespace
{

constexpr int iconSide = 56;
constexpr double iconRadius = 13;

/// A colour that stays with a name.
QColor colorFor(const QString &name)
{
    constexpr std::array<QRgb, 8> colors{0x4C6FFF, 0x00A37A, 0xE5653A, 0xB455D9,
                                         0xD9457E, 0x2597C9, 0x9A7B1F, 0x5E6472};
    return QColor(colors[qHash(name, 0) % colors.size()]);
}

QString firstGrapheme(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    const auto end = finder.toNextBoundary();
    return end > 0 ? text.left(end).toUpper() : QString();
}

} // namespace

AppTile::AppTile(const Platform &platform, const MobileApp &app, QWidget *parent)
    : QAbstractButton(parent), m_platform(platform), m_name(app.displayName()), m_color(colorFor(m_name))
{
    setFixedSize(sizeHint());
    setAccessibleName(m_name);
    setToolTip(app.name);
    setFocusPolicy(Qt::StrongFocus);
}

void AppTile::setMarks(Marks marks)
{
    m_marks = marks;
    update();
}

void AppTile::setImage(const QImage &image)
{
    m_image = image;
    m_icon = {};
    update();
}

const QPixmap &AppTile::roundedIcon(double pixelRatio)
{
    if (!m_icon.isNull() && m_icon.devicePixelRatio() == pixelRatio)
        return m_icon;
    const int side = static_cast<int>(std::lround(iconSide * pixelRatio));
    const auto scaled = m_image.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    m_icon = QPixmap(side, side);
    m_icon.fill(Qt::transparent);
    QPainter painter(&m_icon);
    painter.setRenderHint(QPainter::Antialiasing);
    QBrush brush(scaled);
    const QPointF offset((side - scaled.width()) / 2, (side - scaled.height()) / 2);
    brush.setTransform(QTransform::fromTranslate(offset.x(), offset.y()));
    painter.setPen(Qt::NoPen);
    painter.setBrush(brush);
    // A brush repeats its picture, so it is held to the place of that.
    painter.setClipRect(QRectF(offset, scaled.size()));
    painter.drawRoundedRect(QRectF(0, 0, side, side), iconRadius * pixelRatio, iconRadius * pixelRatio);
    painter.end();
    m_icon.setDevicePixelRatio(pixelRatio);
    return m_icon;
}

void AppTile::paintEvent(QPaintEvent *)
{
    const auto palette = Palette::current(m_platform);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isDown() || m_hovered || hasFocus()) {
        painter.setPen(hasFocus() ? QPen(palette.controlAccent, 2) : QPen(Qt::NoPen));
        painter.setBrush(isDown() ? palette.pressed : m_hovered ? palette.hover : QColor(Qt::transparent));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 10, 10);
    }

    const QRectF icon((width() - iconSide) / 2.0, 10, iconSide, iconSide);
    if (m_image.isNull()) {
        QLinearGradient fill(icon.topLeft(), icon.bottomLeft());
        fill.setColorAt(0, m_color.lighter(118));
        fill.setColorAt(1, m_color);
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRoundedRect(icon, iconRadius, iconRadius);
        painter.setPen(Qt::white);
        painter.setFont(interfaceFont(26, QFont::DemiBold));
        painter.drawText(icon, Qt::AlignCenter, firstGrapheme(m_name));
    } else {
        painter.drawPixmap(icon.topLeft(), roundedIcon(painter.deviceTransform().m11()));
    }
    if (m_marks.isLaunching) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, 110));
        painter.drawRoundedRect(icon, iconRadius, iconRadius);
        painter.setPen(Qt::white);
        painter.setFont(interfaceFont(18, QFont::Bold));
        painter.drawText(icon, Qt::AlignCenter, QStringLiteral("…"));
    } else if (m_marks.isRunning) {
        painter.setPen(QPen(palette.windowBackground, 2));
        painter.setBrush(QColor(0x30B858));
        painter.drawEllipse(QRectF(icon.right() - 9, icon.bottom() - 9, 12, 12));
    }

    painter.setPen(palette.label);
    painter.setFont(interfaceFont(12));
    const QRectF text(4, 72, width() - 8, 18);
    painter.drawText(
        text, Qt::AlignCenter, QFontMetrics(painter.font()).elidedText(m_name, Qt::ElideRight, width() - 8));
}

void AppTile::enterEvent(QEnterEvent *)
{
    m_hovered = true;
    update();
}

void AppTile::leaveEvent(QEvent *)
{
    m_hovered = false;
    update();
}

void AppTile::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

} // namespace quillnest
