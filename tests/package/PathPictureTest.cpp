#include "package/PathData.h"
#include "package/Pictures.h"
#include "platform/desktop/QtDrawing.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillnest;

/// The same path data drawn by us and by librsvg, compared pixel by pixel. Only texts that SVG reads as Android does:
/// flags of arcs stand apart, and nothing is broken.
namespace
{

struct Sample {
    const char *name;
    const char *data;
    bool evenOdd = false;
    double stroke = 0;
};

/// The other renderer samples its edges; drawn larger and reduced they are nearly exact.
constexpr int oversampling = 8;

/// On a viewport of 24 units.
const std::vector<Sample> samples{
    {"lines", "M2 2 L22 4 L18 22 L4 18 Z"},
    {"implied lines", "M2 2 22 4 18 22 4 18z"},
    {"relative implied lines", "m2 2 20 2 -4 18 -14 -4z"},
    {"horizontal and vertical", "M3 3H21V9h-6v12H9V9H3z"},
    {"compact numbers", "M2.5.5l10-.5.5 10.5.5-5-20 3z"},
    {"exponents", "M1e0 2.0E+0L2.2e1 4L180e-1 22z"},
    {"cubic curves", "M2 12C2 2 22 2 22 12S12 22 2 12z"},
    {"smooth cubic chain", "M1 12c2-8 4-8 6 0s4 8 6 0 4-8 6 0v10h-18z"},
    {"smooth cubic after a line", "M2 20L6 4S20 2 22 20z"},
    {"quadratic curves", "M2 12Q12 -6 22 12T2 12z"},
    {"smooth quadratic chain", "M1 12q3-9 6 0t6 0 6 0v8h-18z"},
    {"smooth quadratic after a line", "M2 4L10 4T20 20z"},
    {"half circle", "M2 12A10 10 0 0 1 22 12z"},
    {"full circle of two arcs", "M12 2a10 10 0 1 0 0.001 0z"},
    {"large arc against the clock", "M12 2A10 10 0 1 0 22 12z"},
    {"large arc with the clock", "M2 12A10 10 0 1 1 12 22z"},
    {"small arc against the clock", "M2 12A10 10 0 0 0 12 22z"},
    {"rotated ellipse", "M4 12a9 4 30 1 1 0.01 0.01z"},
    {"rotated arc, other flags", "M4 12a9 4 -60 0 1 12 3l-4 6z"},
    {"radii scaled up", "M2 12A3 5 20 0 1 22 14L12 23z"},
    {"negative radii", "M2 12A-10 -10 0 0 1 22 12z"},
    {"arc without a radius", "M2 2A0 5 0 0 1 22 12L2 22z"},
    {"relative arcs in a row", "M2 12a5 5 0 0 1 10 0 5 5 0 0 0 10 0v8h-20z"},
    {"subpaths wind", "M2 2h20v20h-20zM7 7v10h10v-10z"},
    {"subpaths wind the same way", "M2 2h20v20h-20zM7 7h10v10h-10z"},
    {"even odd", "M2 2h20v20h-20zM7 7h10v10h-10z", true},
    {"star, winding", "M12 1L19 22 1 9h22L5 22z"},
    {"star, even odd", "M12 1L19 22 1 9h22L5 22z", true},
    {"after closing", "M4 4h6v6h-6zl12 12h4z"},
    {"open subpath fills as if closed", "M2 2L22 4 18 22"},
    {"outside the viewport", "M-20 -20L50 4L18 60Z"},
    {"stroked line", "M4 4L20 8L6 20", false, 2},
    {"stroked curve", "M2 20C2 0 22 0 22 20", false, 1.5},
    {"stroked closed corner", "M5 5h14l-7 14z", false, 2},
    {"stroked arc", "M3 12A9 9 0 0 1 21 12", false, 3},
};

Image ours(QtDrawing &drawing, const Sample &sample)
{
    const auto canvas = drawing.canvas(192, 192);
    canvas->translate(0, 192);
    canvas->scale(8, -8);
    const auto path = PathData::parse(sample.data);
    EXPECT_TRUE(path);
    if (sample.stroke > 0) {
        canvas->setLineWidth(sample.stroke);
        canvas->stroke(*path);
    } else {
        canvas->fill(*path, sample.evenOdd ? FillRule::evenOdd : FillRule::winding);
    }
    return canvas->image();
}

Image theirs(QtDrawing &drawing, const QTemporaryDir &folder, const Sample &sample)
{
    const auto style = sample.stroke > 0
        ? QStringLiteral("fill='none' stroke='#000' stroke-miterlimit='10' "
                         "stroke-width='%1'")
              .arg(sample.stroke)
        : QStringLiteral("fill='#000' fill-rule='%1'").arg(QLatin1String(sample.evenOdd ? "evenodd" : "nonzero"));
    QFile svg(folder.filePath(QStringLiteral("path.svg")));
    EXPECT_TRUE(svg.open(QIODevice::WriteOnly | QIODevice::Truncate));
    svg.write(QStringLiteral("<svg xmlns='http://www.w3.org/2000/svg' width='1536' height='1536' viewBox='0 0 24 24'>"
                             "<path d='%1' %2/></svg>")
                  .arg(QLatin1String(sample.data), style)
                  .toUtf8());
    svg.close();
    QProcess convert;
    convert.start(QStringLiteral("rsvg-convert"), {svg.fileName()});
    EXPECT_TRUE(convert.waitForFinished() && convert.exitCode() == 0) << convert.readAllStandardError().toStdString();
    const auto png = convert.readAllStandardOutput();
    const auto image = drawing.decode(
        {reinterpret_cast<const std::uint8_t *>(png.constData()), static_cast<std::size_t>(png.size())});
    EXPECT_TRUE(image);
    return image ? pictures::reduced(*image, oversampling) : Image();
}

} // namespace

TEST(PathPicture, pathsLookAsAnIndependentRendererDrawsThem)
{
    QtDrawing drawing;
    const QTemporaryDir folder;
    for (const auto &sample : samples) {
        SCOPED_TRACE(std::string(sample.name) + ": " + sample.data);
        const auto mine = ours(drawing, sample);
        const auto other = theirs(drawing, folder, sample);
        const auto difference = pictures::difference(mine, other);
        // What is left is rounding, and pixels in which edges cross: coverage is known there, its shape is not.
        EXPECT_LE(difference.greatest, 80);
        EXPECT_LE(difference.mean, 0.05);
        EXPECT_GT(pictures::painted(other), 500) << "too little is painted to compare";
    }
}
