#include "launcher/GreetingHeader.h"

#include "look/Fonts.h"

#include <QLocale>
#include <QPainter>
#include <QStyle>

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
    const auto date = [&](const char *format) { return locale.toString(time.date(), QLatin1String(format)); };
    const auto hello = greeting(time.time());
    switch (style) {
    case ThemeStyle::oneui:
        return {
            {locale.toString(time.time(), QLocale::ShortFormat), displayFont(34, QFont::Light)},
            {date("dddd, d MMMM"), interfaceFont(13), true}};
    case ThemeStyle::ios:
        return {
            {date("dddd"), interfaceFont(13, QFont::DemiBold), true}, {date("d MMMM"), displayFont(30, QFont::Bold)}};
    case ThemeStyle::pixel:
        return {{date("ddd, d MMM"), interfaceFont(13), true}, {hello, roundedFont(22)}};
    case ThemeStyle::classic:
        break;
    }
    return {{hello, displayFont(24, QFont::DemiBold)}, {date("dddd, d MMMM"), interfaceFont(12), true}};
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
