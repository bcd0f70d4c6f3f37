#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QPointF>
#include <QSize>
#include <QString>
#include <optional>

namespace standin
{

/// How the app on a display looks.
struct AppLook {
    QString package;
    QString label;
    QImage icon; ///< null: a coloured monogram takes its place
    QColor accent;
};

/// A place that was touched, in pixels of the display.
struct TouchMark {
    static constexpr qint64 lifetime = 3000; ///< milliseconds
    static constexpr qint64 lastLifetime = 12000; ///< of the newest: a screenshot taken after a touch still shows it

    QPointF at;
    qint64 time = 0; ///< milliseconds of the monotonic clock
    bool isDown = false; ///< the finger is still there
};

/// Everything that a display's picture is made of, as a value.
struct ScreenModel {
    int displayId = 0;
    QSize size;
    int dpi = 160;
    bool night = false;
    std::optional<AppLook> app;
    int depth = 0; ///< screens of the app on top of one another; 1 is its first
    QString text; ///< typed into the app
    qreal scroll = 0; ///< of the list, in density-independent pixels
    QList<TouchMark> marks;

    qreal scale() const { return dpi / 160.0; }
};

} // namespace standin
