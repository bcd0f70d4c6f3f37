/// quillnest-icon-sheet PACKAGE OUT.png [TEXT]: draws every XML drawable of a package whose name contains TEXT into one
/// picture, to be looked at, and prints the names of those that were drawn, row by row. With a folder in place of
/// OUT.png each becomes a picture of its own, as the tests compare them.
#include "package/IconSource.h"
#include "package/IconVector.h"
#include "platform/desktop/QtDrawing.h"
#include "platform/posix/ZipArchives.h"

#include <QDir>
#include <QImage>
#include <QPainter>

#include <cstdio>

using namespace quillnest;

namespace
{

QStringList drawablesOf(const OpenArchive &package, const QString &text)
{
    QStringList result;
    for (const auto each : package.names()) {
        const auto name = QString::fromUtf8(each.data(), static_cast<qsizetype>(each.size()));
        const bool isDrawable = name.startsWith(QLatin1String("res/drawable"))
            || name.startsWith(QLatin1String("res/mipmap")) || name.startsWith(QLatin1String("res/color"));
        if (isDrawable && name.endsWith(QLatin1String(".xml")) && name.contains(text))
            result.append(name);
    }
    return result;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::fputs("usage: quillnest-icon-sheet PACKAGE OUT.png [TEXT]\n", stderr);
        return 2;
    }
    ZipArchives archives;
    QtDrawing drawing;
    const std::string package = argv[1];
    const APKIconExtractor::IconTools tools{
        archives, drawing, [](const std::string &line) { std::fprintf(stderr, "%s\n", line.c_str()); }};
    const auto opened = archives.open(package);
    if (!opened) {
        std::fprintf(stderr, "%s is no package\n", argv[1]);
        return 1;
    }
    const auto table = APKIconExtractor::read(archives, package, "resources.arsc");
    const auto names = drawablesOf(*opened, QString::fromLocal8Bit(argc > 3 ? argv[3] : ""));

    const QDir folder(QString::fromLocal8Bit(argv[2]));
    constexpr int columns = 24;
    constexpr int cell = 72;
    std::vector<QImage> pictures;
    for (const auto &name : names) {
        IconSource source(tools, *opened, table ? ByteView(*table) : ByteView());
        const auto *bytes = source.read(name.toStdString());
        const auto drawn = bytes ? IconVector::render(source, *bytes, 0) : std::nullopt;
        if (!drawn)
            continue;
        const QImage picture(
            reinterpret_cast<const uchar *>(drawn->pixels.data()), drawn->width, drawn->height,
            QImage::Format_ARGB32_Premultiplied);
        std::printf("%3zu.%-2zu %s\n", pictures.size() / columns, pictures.size() % columns, qPrintable(name));
        if (folder.exists())
            picture.save(folder.filePath(QFileInfo(name).completeBaseName() + QStringLiteral(".png")));
        pictures.push_back(picture.scaled(cell - 8, cell - 8, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    }

    const int rows = (static_cast<int>(pictures.size()) + columns - 1) / columns;
    QImage sheet(columns * cell, std::max(rows, 1) * cell, QImage::Format_RGB32);
    sheet.fill(QColor(0x8A9099));
    QPainter painter(&sheet);
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        painter.drawImage(
            static_cast<int>(i % columns) * cell + 4, static_cast<int>(i / columns) * cell + 4, pictures[i]);
    }
    painter.end();
    std::fprintf(stderr, "%zu of %lld files drawn\n", pictures.size(), static_cast<long long>(names.size()));
    return folder.exists() || sheet.save(QString::fromLocal8Bit(argv[2])) ? 0 : 1;
}
