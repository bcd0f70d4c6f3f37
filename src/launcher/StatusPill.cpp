#include "launcher/StatusPill.h"

#include "launcher/Theme.h"
#include "look/Fonts.h"
#include "look/Palette.h"

#include <QPainter>

namespace quillnest
{

namespace
{
constexpr int pillHeight = 20;
constexpr int margin = 8;
constexpr int gap = 5;
constexpr int dot = 7;
constexpr float fillOpacity = 0.13F;

QFont wordFont()
{
    auto font = interfaceFont(11, QFont::Medium);
    font.setStretch(96);
    return font;
}
} // namespace

StatusPill::StatusPill(const PanelLook &look, QWidget *parent) : QWidget(parent), m_look(look)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setState(State::sleeping);
}

void StatusPill::setState(State state)
{
    m_state = state;
    setToolTip(help(state));
    setAccessibleName(word(state));
    setAccessibleDescription(help(state));
    updateGeometry();
    update();
}

QSize StatusPill::sizeHint() const
{
    return {QFontMetrics(wordFont()).horizontalAdvance(word(m_state)) + dot + gap + 2 * margin, pillHeight};
}

QString StatusPill::word(State state)
{
    switch (state) {
    case State::ready:
        return QStringLiteral("Ready");
    case State::starting:
        return QStringLiteral("Starting");
    case State::sleeping:
        return QStringLiteral("Sleeping");
    case State::notSetUp:
        break;
    }
    return QStringLiteral("Set up");
}

QColor StatusPill::color(State state)
{
    switch (state) {
    case State::ready:
        return QuillnestTheme::jade();
    case State::starting:
        return QColor(0xFF9500);
    case State::sleeping:
        return QColor(0x8E8E93);
    case State::notSetUp:
        break;
    }
    return QuillnestTheme::ember();
}

QString StatusPill::help(State state)
{
    switch (state) {
    case State::ready:
        return QStringLiteral("Android is running. Apps open instantly.");
    case State::starting:
        return QStringLiteral("Android is starting.");
    case State::sleeping:
        return QStringLiteral("Android is off to save memory. It starts when you open an app.");
    case State::notSetUp:
        break;
    }
    return QStringLiteral("Android has not been set up yet.");
}

void StatusPill::paintEvent(QPaintEvent *)
{
    const auto shade = color(m_state);
    auto fill = shade;
    fill.setAlphaF(fillOpacity);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(rect(), pillHeight / 2.0, pillHeight / 2.0);
    painter.setBrush(shade);
    painter.drawEllipse(QRectF(margin, (pillHeight - dot) / 2.0, dot, dot));
    // The colour alone would be too faint to read.
    painter.setPen(m_look.colors.label);
    painter.setFont(wordFont());
    painter.drawText(rect().adjusted(margin + dot + gap, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, word(m_state));
}

} // namespace quillnest
