#include "windows/PicturePlace.h"

#include <QtMath>

#include <algorithm>

namespace quillnest
{

bool PicturePlace::fits(QSizeF view, QSize picture)
{
    // The display was asked for by the whole pixels alone, also where the rest is enough for one more on the screen.
    const auto slack = QSize(static_cast<int>(view.width()), static_cast<int>(view.height())) - picture;
    return slack.width() >= 0 && slack.width() < 8 && slack.height() >= 0 && slack.height() < 8;
}

QRect PicturePlace::rect(QSizeF view, QSize picture)
{
    const QSize whole(qRound(view.width()), qRound(view.height()));
    if (picture.isEmpty() || whole.isEmpty())
        return {};
    const auto size = fits(view, picture) ? picture : picture.scaled(whole, Qt::KeepAspectRatio);
    return {QPoint((whole.width() - size.width()) / 2, (whole.height() - size.height()) / 2), size};
}

QPointF PicturePlace::pixelAt(QPointF point, QSizeF view, double scale, QSize picture)
{
    const auto drawn = rect(view * scale, picture);
    if (drawn.isEmpty())
        return {0, 0};
    const auto inside = point * scale - QPointF(drawn.topLeft());
    const double x = inside.x() * picture.width() / drawn.width();
    const double y = inside.y() * picture.height() / drawn.height();
    return {std::clamp(x, 0.0, picture.width() - 1.0), std::clamp(y, 0.0, picture.height() - 1.0)};
}

} // namespace quillnest
