#pragma once

#include "platform/Canvas.h"
#include "platform/desktop/FlatPath.h"
#include "platform/desktop/StrokeOutline.h"

#include <QImage>
#include <QRect>

#include <memory>
#include <vector>

namespace quillnest
{

/// A canvas in memory. Areas are flattened, cut to the bitmap and turned into coverage by Qt's rasterizer; colours,
/// clips and pictures are put together here, because Qt's own clips have hard edges and its gradients a table of
/// colours.
class QtCanvas : public Canvas
{
public:
    /// Longer sides are more than the rasterizer takes.
    static constexpr int longestSide = 16384;

    /// Sides from 1 to `longestSide`; throws std::bad_alloc.
    QtCanvas(int width, int height);

    void saveState() override { m_saved.push_back(m_state); }
    void restoreState() override;

    void translate(double x, double y) override { transform({1, 0, 0, 1, x, y}); }
    void scale(double x, double y) override { transform({x, 0, 0, y, 0, 0}); }
    void rotate(double radians) override;

    void setAlpha(double alpha) override;
    void setFillColor(const Color &color) override { m_state.fillColor = color; }
    void setStrokeColor(const Color &color) override { m_state.strokeColor = color; }
    void setLineWidth(double width) override { m_state.pen.width = width; }
    void setLineCap(LineCap cap) override { m_state.pen.cap = cap; }
    void setLineJoin(LineJoin join) override { m_state.pen.join = join; }

    void clip(const Path &path, FillRule rule) override;

    void fill(const Path &path, FillRule rule) override;
    void stroke(const Path &path) override;
    void fillRect(const Rect &rect) override { fill(rectPath(rect), FillRule::winding); }
    void fillEllipse(const Rect &rect) override { fill(ellipsePath(rect), FillRule::winding); }
    void drawImage(const Image &image, const Rect &rect) override;

    void drawLinearGradient(const Gradient &gradient, Point start, Point end) override;
    void drawRadialGradient(const Gradient &gradient, Point center, double radius) override;

    Image image() const override { return m_image; }

private:
    /// A part of the bitmap.
    struct Area {
        QRect bounds;
        /// How much of each pixel of the bounds belongs to it, of the format Alpha8; null if all do wholly.
        std::shared_ptr<const QImage> coverage;
    };

    struct State {
        Affine transform;
        Area clip;
        double alpha = 1;
        Color fillColor;
        Color strokeColor;
        Pen pen;
    };

    void transform(const Affine &change) { m_state.transform = m_state.transform.after(change); }
    /// An area of user space on the bitmap, inside the clip's bounds; nothing of what can't be drawn.
    Area area(const Path &path, const Affine &map, FillRule rule) const;
    Area rasterize(const Polygons &polygons, FillRule rule) const;
    void fillArea(const Area &area, const Color &color);
    template <typename Colors> void drawGradient(const Gradient &gradient, bool isFlat, Colors position);
    /// Lays `pixel(x, y)` over every pixel of the area that the clip leaves.
    template <typename Source> void paint(const Area &area, Source pixel);

    Image m_image;
    State m_state;
    std::vector<State> m_saved;
};

} // namespace quillnest
