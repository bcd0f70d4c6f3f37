#include "windows/HeaderView.h"

#include "base/QuillnestLayout.h"
#include "look/ElidedLabel.h"
#include "look/Fonts.h"
#include "look/SymbolButton.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

namespace quillnest
{

HeaderView::HeaderView(const Platform &platform, const QString &title, QWidget *parent)
    : QWidget(parent), m_look(platform)
{
    setFixedHeight(QuillnestLayout::headerHeight);
    connect(&m_look, &LiveLook::changed, this, qOverload<>(&QWidget::update));
    auto *stack = new QHBoxLayout(this);
    stack->setContentsMargins(10, 0, 10, 0);
    stack->setSpacing(6);

    const auto *home = addButton(QStringLiteral("square.grid.2x2"), QStringLiteral("Quillnest apps"));
    connect(home, &QAbstractButton::clicked, this, &HeaderView::homeRequested);
    const auto *back = addButton(QStringLiteral("chevron.left"), QStringLiteral("Android Back (Esc / right-click)"));
    connect(back, &QAbstractButton::clicked, this, &HeaderView::backRequested);

    m_titleLabel = new ElidedLabel(title, this);
    m_titleLabel->setFont(interfaceFont(13, QFont::DemiBold));
    m_titleLabel->setTextFormat(Qt::PlainText);
    m_titleLabel->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_titleLabel->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    stack->addWidget(m_titleLabel);
    stack->addStretch(1);

    m_captureButton = addButton(QStringLiteral("camera"), QStringLiteral("Screenshot / screen recording"));
    connect(m_captureButton, &QAbstractButton::clicked, this, [this] { Q_EMIT captureMenuRequested(m_captureButton); });
    m_shadeButton = addButton(QStringLiteral("bell"), QStringLiteral("Notifications"));
    connect(m_shadeButton, &QAbstractButton::clicked, this, &HeaderView::shadeRequested);
    m_sizeButton = addButton(QStringLiteral("aspectratio"), QStringLiteral("Window size"));
    connect(m_sizeButton, &QAbstractButton::clicked, this, [this] { Q_EMIT sizeMenuRequested(m_sizeButton); });
    m_pinButton = addButton(QStringLiteral("pin"), QStringLiteral("Pin on top (keeps the window open)"));
    connect(m_pinButton, &QAbstractButton::clicked, this, &HeaderView::pinToggled);
    const auto *hide = addButton(QStringLiteral("minus"), QStringLiteral("Hide"));
    connect(hide, &QAbstractButton::clicked, this, &HeaderView::hideRequested);
    const auto *close = addButton(QStringLiteral("xmark"), QStringLiteral("Close app"));
    connect(close, &QAbstractButton::clicked, this, &HeaderView::closeRequested);
}

SymbolButton *HeaderView::addButton(const QString &symbol, const QString &toolTip)
{
    auto *button = new SymbolButton(m_look, symbol, toolTip, this);
    layout()->addWidget(button);
    return button;
}

void HeaderView::setPinned(bool on)
{
    m_pinButton->setSymbol(on ? QStringLiteral("pin.fill") : QStringLiteral("pin"), on);
}

void HeaderView::setShadeAvailable(bool on)
{
    m_shadeButton->setVisible(on);
}

void HeaderView::setCaptureAvailable(bool on)
{
    m_captureButton->setVisible(on);
}

void HeaderView::paintEvent(QPaintEvent *)
{
    const auto &colors = m_look.colors;
    auto text = m_titleLabel->palette();
    if (text.color(QPalette::WindowText) != colors.label) {
        text.setColor(QPalette::WindowText, colors.label);
        m_titleLabel->setPalette(text);
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.setPen(Qt::NoPen);
    if (window()->testAttribute(Qt::WA_TranslucentBackground)) {
        painter.fillRect(rect(), Qt::transparent);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.setBrush(colors.headerBackground);
        // The lower corners lie behind the picture.
        painter.drawRoundedRect(
            QRectF(rect()).adjusted(0, 0, 0, windowCornerRadius), windowCornerRadius, windowCornerRadius);
    } else {
        painter.fillRect(rect(), colors.headerBackground);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    painter.fillRect(QRectF(0, height() - 1, width(), 1), colors.separator);
}

void HeaderView::mousePressEvent(QMouseEvent *event)
{
    m_drag.pressed(*event);
}

void HeaderView::mouseMoveEvent(QMouseEvent *event)
{
    m_drag.move(*window(), *event);
}

} // namespace quillnest
