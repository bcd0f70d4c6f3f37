#include "launcher/GreetingHeader.h"

#include "look/Fonts.h"

#include <QLocale>
#include <QPainter>
#include <QRegularExpression>
#include <QStyle>

#include <algorithm>
#include <vector>

namespace quillnest
{

namespace
{
constexpr int margin = 16;
constexpr int minute = 60'000;

int lineHeight(const QFont &font)
{
    return (font.pixelSize() * 5 + 3) / 4;
}

/// A piece of a date's format: a field's letters, a quoted text, or what stands between.
struct Piece {
    QString text;
    bool isField = false;
    bool isQuoted = false;
};

std::vector<Piece> piecesOf(const QString &format)
{
    static const QRegularExpression piece(QStringLiteral("(?<field>([dMy])\\2*)|(?<quoted>'[^']*')|."));
    std::vector<Piece> pieces;
    for (auto found = piece.globalMatch(format); found.hasNext();) {
        const auto match = found.next();
        pieces.push_back({match.captured(), match.hasCaptured(u"field"), match.hasCaptured(u"quoted")});
    }
    return pieces;
}

/// The format without a field, and without what joins that to its neighbours.
QString without(const QString &format, const QString &field)
{
    auto pieces = piecesOf(format);
    const auto isField = [](const Piece &piece) { return piece.isField; };
    const auto at = std::find_if(pieces.begin(), pieces.end(), [&](const Piece &piece) {
        return piece.isField && piece.text.startsWith(field);
    });
    if (at == pieces.end())
        return format;
    auto begin = at;
    const auto end = std::find_if(at + 1, pieces.end(), isField);
    // At the end the words before it go, but neither a full stop nor a word that belongs to the field before.
    while (end == pieces.end() && begin != pieces.begin()) {
        const auto &before = *(begin - 1);
        const bool belongs = before.text == u"." && begin - 1 != pieces.begin() && (begin - 2)->isField;
        if (before.isField || belongs || (!before.isQuoted && before.text.front().isLetter()))
            break;
        --begin;
    }
    pieces.erase(begin, end);
    QString result;
    for (const auto &piece : pieces)
        result += piece.text;
    return result.trimmed();
}

/// As the language writes a weekday, a day and a month.
QString dateFormat(const QLocale &locale)
{
    return without(locale.dateFormat(QLocale::LongFormat), QStringLiteral("y"));
}

/// The clock is drawn once a minute.
QString clockFormat(const QLocale &locale)
{
    static const QRegularExpression seconds(QStringLiteral("[^hHmaApP]?ss?"));
    return locale.timeFormat(QLocale::ShortFormat).remove(seconds);
}
} // namespace

GreetingHeader::GreetingHeader(const Platform &platform, const PanelLook &look, QWidget *parent)
    : QWidget(parent), m_platform(platform), m_look(look)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    tick();
}

QString GreetingHeader::greeting(QTime time)
{
    const int hour = time.hour();
    if (hour >= 5 && hour <= 11)
        return QStringLiteral("Good morning");
    if (hour >= 12 && hour <= 16)
        return QStringLiteral("Good afternoon");
    if (hour >= 17 && hour <= 21)
        return QStringLiteral("Good evening");
    return QStringLiteral("Good night");
}

GreetingHeader::Lines GreetingHeader::lines(ThemeStyle style, const QDateTime &time, const QLocale &locale)
{
    const auto date = [&](const QString &format) { return locale.toString(time.date(), format); };
    const auto wide = dateFormat(locale);
    const auto hello = greeting(time.time());
    switch (style) {
    case ThemeStyle::oneui:
        return {
            {locale.toString(time.time(), clockFormat(locale)), displayFont(34, QFont::Light)},
            {date(wide), interfaceFont(13), true}};
    case ThemeStyle::ios:
        return {
            {date(QStringLiteral("dddd")), interfaceFont(13, QFont::DemiBold), true},
            {date(without(wide, QStringLiteral("ddd"))), displayFont(30, QFont::Bold)}};
    case ThemeStyle::pixel:
        return {
            {date(QString(wide)
                      .replace(QStringLiteral("dddd"), QStringLiteral("ddd"))
                      .replace(QStringLiteral("MMMM"), QStringLiteral("MMM"))),
             interfaceFont(13), true},
            {hello, roundedFont(22)}};
    case ThemeStyle::classic:
        break;
    }
    return {{hello, displayFont(24, QFont::DemiBold)}, {date(wide), interfaceFont(12), true}};
}

QSize GreetingHeader::sizeHint() const
{
    const auto both = lines(m_look.style, now());
    return {200, lineHeight(both.first.font) + lineHeight(both.second.font) + 6};
}

void GreetingHeader::paintEvent(QPaintEvent *)
{
    const auto both = lines(m_look.style, now());
    QPainter painter(this);
    int y = 2;
    for (const auto *line : {&both.first, &both.second}) {
        const int high = lineHeight(line->font);
        painter.setFont(line->font);
        painter.setPen(line->quiet ? m_look.colors.secondaryLabel : m_look.colors.label);
        const QRect area(margin, y, width() - 2 * margin, high);
        painter.drawText(
            area, QStyle::visualAlignment(layoutDirection(), Qt::AlignVCenter | Qt::AlignLeft),
            painter.fontMetrics().elidedText(line->text, Qt::ElideRight, area.width()));
        y += high + 2;
    }
}

void GreetingHeader::tick()
{
    const auto both = lines(m_look.style, now());
    setAccessibleName(QStringLiteral("%1, %2").arg(both.first.text, both.second.text));
    updateGeometry();
    update();
}

void GreetingHeader::waitForNextMinute()
{
    const int passed = now().time().msecsSinceStartOfDay() % minute;
    m_timer = m_platform.clock->after(std::chrono::milliseconds(minute - passed), [this] {
        tick();
        waitForNextMinute();
    });
}

void GreetingHeader::showEvent(QShowEvent *)
{
    tick();
    waitForNextMinute();
}

void GreetingHeader::hideEvent(QHideEvent *)
{
    m_timer.reset();
}

} // namespace quillnest
