#pragma once

#include "launcher/PanelLook.h"
#include "launcher/PanelServices.h"

#include <QPainter>
#include <QRectF>

namespace quillnest
{

/// One app in the panel's grid: what it says of itself and how it is painted. The grid lays tiles out and gives them
/// the user's attention.
class AppTile
{
public:
    /// What an app's being in use shows on its tile.
    struct Marks {
        bool launching = false;
        bool running = false;
        bool unread = false;
        bool locked = false;
        /// Its last launch came to nothing.
        bool failed = false;

        bool operator==(const Marks &) const = default;
    };
    struct Attention {
        bool hovered = false;
        bool pressed = false;
        /// It has the keyboard.
        bool focused = false;
    };

    static constexpr double iconSize = 54;
    /// Of a whole tile, in points.
    static int height(ThemeStyle style) { return style == ThemeStyle::oneui ? 104 : 92; }
    /// Where the icon stands in a tile.
    static QRectF iconArea(const QRectF &tile);

    explicit AppTile(MobileApp app) : m_app(std::move(app)), m_name(m_app.displayName()) { }

    const MobileApp &app() const { return m_app; }
    const QString &name() const { return m_name; }

    static Marks marks(const PanelServices &services, QUuid id);

    /// "Open" or "Show", and the name; below that what its marks mean.
    QString toolTip(const PanelServices &services) const;
    /// The marks in words, for those who don't see them.
    static QString spoken(const Marks &marks);

    void paint(
        QPainter &painter, const QRectF &tile, const QImage &image, const Marks &marks, const Attention &attention,
        const PanelLook &look, const Symbols &symbols) const;

private:
    void paintMarks(
        QPainter &painter, const QRectF &icon, const Marks &marks, const PanelLook &look, const Symbols &symbols) const;
    void paintLabel(QPainter &painter, const QRectF &area, const PanelLook &look) const;

    MobileApp m_app;
    QString m_name;
};

} // namespace quillnest
