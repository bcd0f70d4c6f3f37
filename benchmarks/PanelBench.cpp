#include "benchmarks/PanelBench.h"

#include "benchmarks/SampleLibrary.h"
#include "benchmarks/StoreRig.h"
#include "fakes/IconOfFile.h"
#include "launcher/LauncherSettings.h"
#include "launcher/MenuPanel.h"
#include "platform/HostPlatform.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QPainter>
#include <QPixmapCache>
#include <QScrollArea>
#include <QScrollBar>

#include <cstdio>

namespace quillnest::bench
{

namespace
{

constexpr int appCount = 500;
constexpr int rounds = 7;
/// Of a display that shows 60 pictures a second.
constexpr double frame = 16;

std::optional<APKIconExtractor::Icon> icon(Drawing &drawing, const std::string &path)
{
    QImage image(192, 192, QImage::Format_RGB32);
    image.fill(QColor::fromHsv(static_cast<int>(std::hash<std::string>()(path) % 360), 180, 220));
    QPainter painter(&image);
    painter.setBrush(Qt::white);
    painter.drawEllipse(50, 50, 92, 92);
    painter.end();
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return iconOfFile(drawing, {png.begin(), png.end()});
}

double since(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

QImage canvas(double scale)
{
    QImage image(QSize(390, 760) * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    return image;
}

double firstPaint(const PanelServices &services, double scale)
{
    auto image = canvas(scale);
    QPixmapCache::clear();
    QElapsedTimer timer;
    timer.start();
    MenuPanel panel(services);
    panel.resize(390, 760);
    panel.render(&image, {}, {}, QWidget::DrawChildren);
    return since(timer);
}

/// Steps through a use of the panel and paints after each, as the toolkit would in a window of that scale.
class Use
{
public:
    explicit Use(MenuPanel &panel) : m_panel(panel), m_image(canvas(2)) { }

    void step(const QString &work, const std::function<void()> &act)
    {
        QElapsedTimer timer;
        timer.start();
        act();
        QCoreApplication::processEvents();
        const double event = since(timer);
        m_panel.render(&m_image, {}, {}, QWidget::DrawChildren);
        const double whole = since(timer);
        if (whole > frame)
            std::fprintf(
                stderr, "panel-500: %s took %.1f ms, %.1f of them before the painting\n", qUtf8Printable(work), whole,
                event);
        m_worst = std::max(m_worst, whole);
    }
    double worst() const { return m_worst; }

private:
    MenuPanel &m_panel;
    QImage m_image;
    double m_worst = 0;
};

double worstFrame(const PanelServices &services)
{
    MenuPanel panel(services);
    panel.resize(390, 760);
    QPixmapCache::clear();
    auto opening = canvas(2);
    panel.render(&opening, {}, {}, QWidget::DrawChildren);
    Use use(panel);
    auto *bar = panel.findChild<QScrollArea *>()->verticalScrollBar();
    for (int y = 0; y <= bar->maximum(); y += 96)
        use.step(QStringLiteral("scrolling to %1").arg(y), [&] { bar->setValue(y); });
    bar->setValue(0);
    QString typed;
    for (const QChar letter : QStringLiteral("weather")) {
        typed += letter;
        use.step(QStringLiteral("searching \"%1\"").arg(typed), [&] { services.store.setSearch(typed); });
    }
    while (!typed.isEmpty()) {
        typed.chop(1);
        use.step(QStringLiteral("going back to \"%1\"").arg(typed), [&] { services.store.setSearch(typed); });
    }
    return use.worst();
}

void run(BenchReport &report)
{
    const auto fakes = fakePlatform();
    auto platform = fakes.platform;
    platform.symbols = hostSymbols();
    fakes.settings->setValue(LauncherSettings::wallpaper.key(), QStringLiteral("aurora"));
    {
        StoreRig rig(fakes, sampleLibrary(appCount));
        auto &store = *rig.store;
        AppIconStore icons(platform, rig.log, [](const APKIconExtractor::IconTools &tools, const std::string &path) {
            return icon(tools.drawing, path);
        });
        for (const auto &app : store.apps())
            icons.image(app);
        fakes.settle();
        const PanelServices services{.platform = platform, .store = store, .icons = icons, .windows = rig.windows};
        Samples plain;
        Samples fine;
        Samples worst;
        for (int round = 0; round < rounds; ++round) {
            plain.add(firstPaint(services, 1));
            fine.add(firstPaint(services, 2));
            worst.add(worstFrame(services));
        }
        report.add(QStringLiteral("panel_500_first_paint_ms"), plain, QStringLiteral("ms"));
        report.add(QStringLiteral("panel_500_first_paint_2x_ms"), fine, QStringLiteral("ms"));
        report.add(QStringLiteral("panel_scroll_worst_frame_ms"), worst, QStringLiteral("ms"));
    }
    while (fakes.clock->advanceToNext())
        fakes.settle();
}

} // namespace

Benchmark panelBench()
{
    return {
        QStringLiteral("panel-500"),
        {QStringLiteral("panel_500_first_paint_ms"), QStringLiteral("panel_500_first_paint_2x_ms"),
         QStringLiteral("panel_scroll_worst_frame_ms")},
        run};
}

} // namespace quillnest::bench
