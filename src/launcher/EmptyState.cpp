#include "launcher/EmptyState.h"

#include "look/ContinuousCorners.h"
#include "look/Fonts.h"
#include "look/PushButton.h"

#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace quillnest
{

namespace
{
constexpr int signSize = 64;
constexpr int symbolSize = 32;
} // namespace

EmptyState::EmptyState(const PanelLook &look, QWidget *parent) : QWidget(parent), m_look(look)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(16, 16, 16, 16);
    column->setSpacing(8);
    column->addStretch(2);
    column->addSpacing(signSize + 8);
    m_heading = new QLabel(QStringLiteral("Add your first app"), this);
    m_heading->setFont(displayFont(17, QFont::DemiBold));
    m_text
        = new QLabel(QStringLiteral("Drop an APK file here, or choose one.\nIt opens in its own small window."), this);
    m_text->setFont(interfaceFont(12));
    for (auto *label : {m_heading, m_text}) {
        label->setAlignment(Qt::AlignCenter);
        label->setWordWrap(true);
        column->addWidget(label);
    }
    column->addSpacing(8);
    auto *choose = new PushButton(look, QStringLiteral("Choose APK…"), PushButton::Kind::prominent, this);
    connect(choose, &QAbstractButton::clicked, this, &EmptyState::chooseRequested);
    column->addWidget(choose, 0, Qt::AlignHCenter);
    column->addStretch(3);
    refresh();
}

void EmptyState::refresh()
{
    const auto set = [](QLabel *label, const QColor &color) {
        auto palette = label->palette();
        palette.setColor(QPalette::WindowText, color);
        label->setPalette(palette);
    };
    set(m_heading, m_look.colors.label);
    set(m_text, m_look.colors.secondaryLabel);
    update();
}

void EmptyState::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF sign((width() - signSize) / 2, m_heading->y() - signSize - 16, signSize, signSize);
    auto ground = m_look.colors.controlAccent;
    ground.setAlphaF(m_look.isDark ? 0.22F : 0.12F);
    painter.fillPath(continuousRectangle(sign, signSize * 0.235), ground);
    const auto symbol
        = m_look.symbol(QStringLiteral("arrow.down.app"), symbolSize, m_look.colors.controlAccent, painter);
    painter.drawPixmap(sign.topLeft() + QPointF(1, 1) * ((signSize - symbolSize) / 2.0), symbol);
}

} // namespace quillnest
