#include "stream/ScreenPainter.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <array>
#include <cmath>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

constexpr qreal markRadius = 22; // dp
constexpr qint64 fadeTime = 800;

const std::array<const char *, 8> rowTitles = {"Morning walk", "Harbour at dusk", "Paper lanterns", "Field notes",
                                               "Slow coffee",  "Night train",     "Window seat",    "Letters home"};
const std::array<const char *, 8> rowNotes = {
    "7 places along the river", "Blue hour, long exposure", "How to fold and light them", "Sketches from the garden",
    "Three recipes, no hurry",  "Sleeper to the coast",     "Clouds over the valley",     "Written but not yet sent"};

} // namespace

QColor markColour()
{
    return QColor(255, 45, 150);
}

ScreenPainter::ScreenPainter(const ScreenModel &model)
    : m_model(model)
    , m_layout(model)
    , m_background(model.night ? QColor(0x12, 0x14, 0x18) : QColor(0xf4, 0xf5, 0xf8))
    , m_surface(model.night ? QColor(0x1f, 0x22, 0x29) : QColor(0xff, 0xff, 0xff))
    , m_ink(model.night ? QColor(0xec, 0xee, 0xf2) : QColor(0x1b, 0x1d, 0x22))
    , m_faint(model.night ? QColor(0x97, 0x9d, 0xa8) : QColor(0x6a, 0x70, 0x7c))
    , m_accent(model.app ? model.app->accent : QColor(0x50, 0x60, 0x80))
{
}

QFont ScreenPainter::font(qreal dp, int weight) const
{
    QFont font;
    font.setFamilies({u"Inter"_s, u"Noto Sans"_s, u"DejaVu Sans"_s});
    font.setPixelSize(qMax(1, qRound(m_layout.px(dp))));
    font.setWeight(static_cast<QFont::Weight>(weight));
    return font;
}

void ScreenPainter::paintStill(QPainter &painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.fillRect(QRect(QPoint(), m_model.size), m_background);
    if (!m_model.app)
        return;
    paintCard(painter);
    paintChips(painter);
    paintField(painter);
    paintList(painter);
}

void ScreenPainter::paintMoving(QPainter &painter, const QDateTime &now, qint64 milliseconds) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_model.app) {
        paintClock(painter, now);
        paintDial(painter, milliseconds);
    }
    paintMarks(painter, milliseconds);
}

QList<QRect> ScreenPainter::movingParts(qint64) const
{
    QList<QRect> parts;
    if (m_model.app)
        parts = {m_layout.clock.toAlignedRect(), m_layout.dial.adjusted(-2, -2, 2, 2).toAlignedRect()};
    for (const TouchMark &mark : m_model.marks)
        parts.append(boundsOfMark(mark).toAlignedRect());
    return parts;
}

void ScreenPainter::paintCard(QPainter &painter) const
{
    const AppLook &app = *m_model.app;
    QLinearGradient fill(m_layout.card.topLeft(), m_layout.card.bottomRight());
    fill.setColorAt(0, m_accent.lighter(112));
    fill.setColorAt(1, m_accent.darker(m_model.night ? 190 : 150));
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(m_layout.card, m_layout.px(24), m_layout.px(24));

    if (!app.icon.isNull()) {
        painter.drawImage(m_layout.icon, app.icon);
    } else {
        painter.setBrush(QColor(255, 255, 255, 60));
        painter.drawRoundedRect(m_layout.icon, m_layout.px(16), m_layout.px(16));
        painter.setPen(Qt::white);
        painter.setFont(font(28, QFont::DemiBold));
        painter.drawText(m_layout.icon, Qt::AlignCenter, app.label.left(1).toUpper());
    }
    painter.setPen(Qt::white);
    painter.setFont(font(22, QFont::DemiBold));
    const QString name = m_model.depth > 1 ? u"%1 \u203a screen %2"_s.arg(app.label).arg(m_model.depth) : app.label;
    painter.drawText(
        m_layout.title, Qt::AlignLeft | Qt::AlignVCenter,
        QFontMetricsF(painter.font()).elidedText(name, Qt::ElideRight, m_layout.title.width()));
    painter.setPen(QColor(255, 255, 255, 190));
    painter.setFont(font(12.5, QFont::Normal));
    painter.drawText(
        m_layout.subtitle, Qt::AlignLeft | Qt::AlignVCenter,
        QFontMetricsF(painter.font()).elidedText(app.package, Qt::ElideMiddle, m_layout.subtitle.width()));
}

void ScreenPainter::paintChips(QPainter &painter) const
{
    const QStringList texts
        = {u"%1 \u00d7 %2"_s.arg(m_model.size.width()).arg(m_model.size.height()), u"%1 dpi"_s.arg(m_model.dpi),
           u"Display %1"_s.arg(m_model.displayId)};
    painter.setFont(font(13, QFont::Medium));
    const QFontMetricsF metrics(painter.font());
    qreal left = m_layout.chips.left();
    for (const QString &text : texts) {
        const QRectF chip(
            left, m_layout.chips.top(), metrics.horizontalAdvance(text) + m_layout.px(26), m_layout.chips.height());
        if (chip.right() > m_layout.chips.right())
            break;
        QColor tint = m_accent;
        tint.setAlpha(m_model.night ? 70 : 36);
        painter.setPen(Qt::NoPen);
        painter.setBrush(tint);
        painter.drawRoundedRect(chip, chip.height() / 2, chip.height() / 2);
        painter.setPen(m_model.night ? m_accent.lighter(150) : m_accent.darker(160));
        painter.drawText(chip, Qt::AlignCenter, text);
        left = chip.right() + m_layout.px(8);
    }
}

void ScreenPainter::paintField(QPainter &painter) const
{
    const bool hasText = !m_model.text.isEmpty();
    painter.setBrush(m_surface);
    QColor quiet = m_faint;
    quiet.setAlpha(100);
    painter.setPen(QPen(hasText ? m_accent : quiet, m_layout.px(hasText ? 2 : 1)));
    painter.drawRoundedRect(m_layout.field.adjusted(1, 1, -1, -1), m_layout.px(14), m_layout.px(14));
    const qreal pad = m_layout.px(16);
    const QRectF inner = m_layout.field.adjusted(pad, m_layout.px(6), -pad, -m_layout.px(6));
    painter.setFont(font(16, QFont::Normal));
    painter.setPen(hasText ? m_ink : m_faint);
    if (!hasText) {
        painter.drawText(inner, Qt::AlignLeft | Qt::AlignVCenter, u"Write something\u2026"_s);
        return;
    }
    QStringList lines = m_model.text.split(u'\n');
    lines = lines.mid(qMax<qsizetype>(0, lines.size() - 4));
    const QFontMetricsF metrics(painter.font());
    const qreal step = inner.height() / static_cast<qreal>(lines.size());
    QRectF line(inner.left(), inner.top(), inner.width(), step);
    for (const QString &text : lines) {
        // The end of a long line matters more than its beginning: that is where one types.
        const QString shown = metrics.elidedText(text, Qt::ElideLeft, line.width() - m_layout.px(4));
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, shown);
        if (line.bottom() > inner.bottom() - step / 2) {
            const qreal at = line.left() + metrics.horizontalAdvance(shown) + m_layout.px(2);
            painter.fillRect(
                QRectF(at, line.center().y() - m_layout.px(10), m_layout.px(2), m_layout.px(20)), m_accent);
        }
        line.translate(0, step);
    }
}

void ScreenPainter::paintList(QPainter &painter) const
{
    painter.save();
    painter.setClipRect(m_layout.list);
    const qreal pitch = m_layout.px(76);
    const qreal offset = m_layout.px(m_model.scroll);
    const int first = static_cast<int>(offset / pitch);
    const int last = static_cast<int>((offset + m_layout.list.height()) / pitch);
    for (int row = first; row <= last; ++row) {
        const QRectF card(
            m_layout.list.left(), m_layout.list.top() + row * pitch - offset, m_layout.list.width(),
            pitch - m_layout.px(10));
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_surface);
        painter.drawRoundedRect(card, m_layout.px(16), m_layout.px(16));
        const QRectF dot(
            card.left() + m_layout.px(14), card.center().y() - m_layout.px(20), m_layout.px(40), m_layout.px(40));
        painter.setBrush(QColor::fromHsv((m_accent.hsvHue() + row * 29 + 360) % 360, 120, m_model.night ? 150 : 215));
        painter.drawEllipse(dot);
        painter.setPen(Qt::white);
        painter.setFont(font(15, QFont::DemiBold));
        painter.drawText(dot, Qt::AlignCenter, QString::number(row + 1));
        const auto text = static_cast<size_t>(row) % rowTitles.size();
        const qreal left = dot.right() + m_layout.px(14);
        const QRectF upper(left, card.top() + m_layout.px(12), card.right() - left - m_layout.px(10), m_layout.px(22));
        painter.setPen(m_ink);
        painter.setFont(font(16, QFont::Medium));
        painter.drawText(upper, Qt::AlignLeft | Qt::AlignVCenter, QLatin1StringView(rowTitles[text]));
        painter.setPen(m_faint);
        painter.setFont(font(13, QFont::Normal));
        painter.drawText(
            upper.translated(0, m_layout.px(22)), Qt::AlignLeft | Qt::AlignVCenter, QLatin1StringView(rowNotes[text]));
    }
    painter.restore();
}

void ScreenPainter::paintClock(QPainter &painter, const QDateTime &now) const
{
    painter.setPen(Qt::white);
    // Digits in cells of one width, so that the clock does not tremble; all of them in whatever room there is.
    constexpr qreal digitShare = 0.62; // of the font's size; a sign takes half as much
    const qreal size = qMin(34.0, m_layout.clock.width() / m_layout.scale / (9 * digitShare + 3 * digitShare / 2));
    painter.setFont(font(size, QFont::DemiBold));
    const qreal digit = m_layout.px(size * digitShare);
    const QString text = now.toString(u"HH:mm:ss.zzz"_s);
    QRectF cell = m_layout.clock;
    for (const QChar letter : text) {
        cell.setWidth(letter.isDigit() ? digit : digit / 2);
        painter.drawText(cell, Qt::AlignCenter, letter);
        cell.moveLeft(cell.right());
    }
}

void ScreenPainter::paintDial(QPainter &painter, qint64 milliseconds) const
{
    const qreal stroke = m_layout.px(5);
    const QRectF ring = m_layout.dial.adjusted(stroke, stroke, -stroke, -stroke);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(255, 255, 255, 70), stroke));
    painter.drawEllipse(ring);
    const int start = static_cast<int>(90 * 16 - (milliseconds % 2000) * 360 * 16 / 2000);
    painter.setPen(QPen(Qt::white, stroke, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(ring, start, -70 * 16);
}

void ScreenPainter::paintMarks(QPainter &painter, qint64 milliseconds) const
{
    for (qsizetype i = 0; i < m_model.marks.size(); ++i) {
        const TouchMark &mark = m_model.marks[i];
        const bool isLast = i + 1 == m_model.marks.size();
        const qint64 left = mark.time + (isLast ? TouchMark::lastLifetime : TouchMark::lifetime) - milliseconds;
        const qreal strength = isLast && mark.isDown ? 1.0 : qBound(0.0, static_cast<qreal>(left) / fadeTime, 1.0);
        if (strength <= 0)
            continue;
        QColor colour = markColour();
        colour.setAlphaF(static_cast<float>(strength));
        QColor fill = colour;
        fill.setAlphaF(static_cast<float>(strength * (mark.isDown ? 0.35 : 0.12)));
        painter.setBrush(fill);
        painter.setPen(QPen(colour, m_layout.px(4)));
        painter.drawEllipse(mark.at, m_layout.px(markRadius), m_layout.px(markRadius));
    }
}

QRectF ScreenPainter::boundsOfMark(const TouchMark &mark) const
{
    const qreal reach = m_layout.px(markRadius + 4);
    return {mark.at.x() - reach, mark.at.y() - reach, 2 * reach, 2 * reach};
}

} // namespace standin
