#include "windows/WindowPlacement.h"

#include "windows/WindowSettings.h"

#include <QVariant>

#include <algorithm>

namespace quillnest
{

namespace
{

bool isNumber(const QVariant &value)
{
    return value.typeId() == QMetaType::LongLong || value.typeId() == QMetaType::Int
        || value.typeId() == QMetaType::Double;
}

/// The frame, stepped aside until none of the others has just its corner; both windows' headers can be seen then.
QRect besideOthers(QRect frame, QRect visible, const std::vector<QPoint> &taken)
{
    constexpr int step = 24;
    constexpr int mostSteps = 20;
    const auto isTaken = [&taken](QPoint corner) {
        return std::any_of(taken.begin(), taken.end(), [corner](QPoint other) {
            return (other - corner).manhattanLength() < step / 2;
        });
    };
    // Towards where there is more room.
    const auto room = visible.center() - frame.center();
    const QPoint aside(room.x() < 0 ? -step : step, room.y() < 0 ? -step : step);
    for (int i = 0; i < mostSteps && isTaken(frame.topLeft()); ++i)
        frame = WindowPlacement::fittedFrame(frame.translated(aside), frame.size(), visible);
    return frame;
}

} // namespace

WindowPlacement::Record WindowPlacement::load(const SettingsStore &settings, const QString &package)
{
    const auto values = settings.value(WindowSettings::window.key(package)).toMap();
    const auto x = values.value(QStringLiteral("x"));
    const auto y = values.value(QStringLiteral("y"));
    const auto pinned = values.value(QStringLiteral("pinned"));
    Record record;
    if (isNumber(x) && isNumber(y))
        record.origin = QPoint(x.toInt(), y.toInt());
    record.isPinned = pinned.typeId() == QMetaType::Bool && pinned.toBool();
    return record;
}

void WindowPlacement::save(SettingsStore &settings, const QString &package, QRect frame, bool isPinned)
{
    settings.setValue(
        WindowSettings::window.key(package),
        QVariantMap{
            {QStringLiteral("x"), frame.x()},
            {QStringLiteral("y"), frame.y()},
            {QStringLiteral("w"), frame.width()},
            {QStringLiteral("h"), frame.height()},
            {QStringLiteral("pinned"), isPinned}});
}

std::optional<QRect> WindowPlacement::visibleFrame(const Screens &screens, QPoint point)
{
    auto screen = screens.containing(point);
    if (!screen)
        screen = screens.main();
    return screen ? std::optional(screen->visibleFrame) : std::nullopt;
}

QRect WindowPlacement::initialFrame(
    const Screens &screens, const Record &record, QSize size, std::optional<QRect> anchor,
    const std::vector<QPoint> &taken)
{
    if (record.isPinned && record.origin) {
        // A spot inside the upper left corner tells whether the screen is still there.
        for (const auto &screen : screens.all()) {
            if (screen.visibleFrame.contains(*record.origin + QPoint(20, 20)))
                return {*record.origin, size.boundedTo(screen.visibleFrame.size())};
        }
    }
    const auto main = screens.main();
    const auto visible = visibleFrame(
        screens,
        anchor     ? anchor->topLeft() + QPoint(20, 20)
            : main ? main->frame.center()
                   : QPoint());
    if (!visible)
        return {anchor ? anchor->topLeft() : QPoint(), size};
    const auto corner = QPoint(visible->x() + visible->width() - size.width() - 12, visible->y() + 6);
    const auto frame = fittedFrame(QRect(anchor ? anchor->topLeft() : corner, size), size, *visible);
    return besideOthers(frame, *visible, taken);
}

QPoint WindowPlacement::launcherOrigin(const ScreenInfo &screen, QSize size)
{
    const auto visible = screen.visibleFrame;
    const int x = visible.x() + visible.width() - size.width() - 12;
    const int barAtTop = visible.y() - screen.frame.y();
    const int barAtBottom = screen.frame.bottom() - visible.bottom();
    const int top = visible.y() + 6;
    if (barAtBottom <= barAtTop)
        return {x, top};
    return {x, std::max(top, visible.bottom() + 1 - size.height() - 6)};
}

QRect WindowPlacement::fittedFrame(QRect frame, QSize wanted, QRect visible)
{
    const QSize size = wanted.boundedTo(visible.size());
    int x = frame.x();
    int y = frame.y();
    if (y + size.height() > visible.y() + visible.height())
        y = visible.y() + visible.height() - size.height();
    if (x + size.width() > visible.x() + visible.width())
        x = visible.x() + visible.width() - size.width();
    return {QPoint(std::max(x, visible.x()), std::max(y, visible.y())), size};
}

} // namespace quillnest
