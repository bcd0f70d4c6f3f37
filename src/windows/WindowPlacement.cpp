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

QPoint
WindowPlacement::initialOrigin(const Screens &screens, const Record &record, QSize size, std::optional<QRect> anchor)
{
    if (record.isPinned && record.origin) {
        // A spot inside the upper left corner tells whether the screen is still there.
        for (const auto &screen : screens.all()) {
            if (screen.visibleFrame.contains(*record.origin + QPoint(20, 20)))
                return *record.origin;
        }
    }
    if (anchor)
        return anchor->topLeft();
    const auto screen = screens.main();
    if (!screen)
        return {0, 0};
    const auto visible = screen->visibleFrame;
    return {visible.x() + visible.width() - size.width() - 12, visible.y() + 6};
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
    return {QPoint(std::max(x, visible.x()), y), size};
}

} // namespace quillnest
