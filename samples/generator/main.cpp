// Draws the sample apps' launcher icons: the artwork is this small program, the pictures are made at build time.
// Usage: sample_icons NAME FOLDER writes FOLDER/mipmap-{density}/ic_launcher.png for every density.

#include "IconArtist.h"

#include <QDir>
#include <QGuiApplication>
#include <QPainter>
#include <cstdio>

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 3) {
        std::fprintf(stderr, "usage: sample_icons NAME FOLDER\n");
        return 2;
    }
    const struct {
        const char *density;
        int size;
    } densities[] = {{"mdpi", 48}, {"hdpi", 72}, {"xhdpi", 96}, {"xxhdpi", 144}, {"xxxhdpi", 192}};
    for (const auto &[density, size] : densities) {
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(size / 192.0, size / 192.0);
        if (!samples::paintIcon(arguments[1], painter)) {
            std::fprintf(stderr, "sample_icons: no icon named %s\n", qPrintable(arguments[1]));
            return 1;
        }
        painter.end();
        const QString folder = arguments[2] + QStringLiteral("/mipmap-") + QLatin1StringView(density);
        if (!QDir().mkpath(folder) || !image.save(folder + QStringLiteral("/ic_launcher.png"))) {
            std::fprintf(stderr, "sample_icons: cannot write to %s\n", qPrintable(folder));
            return 1;
        }
    }
    return 0;
}
