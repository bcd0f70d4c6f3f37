#include "launcher/wallpaper/Wallpaper.h"

#include "base/QuillnestFolders.h"
#include "launcher/LauncherSettings.h"

#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QSaveFile>

#include <algorithm>

namespace quillnest
{

namespace
{
QColor rgb(float red, float green, float blue)
{
    return QColor::fromRgbF(red, green, blue);
}

constexpr int jpegQuality = 90;
} // namespace

const std::vector<Wallpaper> &Wallpaper::presets()
{
    static const std::vector<Wallpaper> table{
        {QStringLiteral("aurora"),
         QStringLiteral("Aurora"),
         {rgb(0.05F, 0.1F, 0.25F), rgb(0.1F, 0.55F, 0.55F), rgb(0.45F, 0.2F, 0.6F)}},
        {QStringLiteral("sunset"),
         QStringLiteral("Sunset"),
         {rgb(0.98F, 0.45F, 0.3F), rgb(0.85F, 0.25F, 0.5F), rgb(0.3F, 0.15F, 0.45F)}},
        {QStringLiteral("ocean"),
         QStringLiteral("Ocean"),
         {rgb(0.05F, 0.3F, 0.6F), rgb(0.1F, 0.6F, 0.8F), rgb(0.55F, 0.85F, 0.9F)}},
        {QStringLiteral("forest"),
         QStringLiteral("Forest"),
         {rgb(0.05F, 0.2F, 0.12F), rgb(0.09F, 0.5F, 0.4F), rgb(0.6F, 0.8F, 0.45F)}},
        {QStringLiteral("midnight"),
         QStringLiteral("Midnight"),
         {rgb(0.02F, 0.02F, 0.06F), rgb(0.1F, 0.08F, 0.25F), rgb(0.25F, 0.1F, 0.35F)}}};
    return table;
}

const Wallpaper *Wallpaper::preset(const QString &id)
{
    const auto &all = presets();
    const auto found = std::find_if(all.begin(), all.end(), [&id](const Wallpaper &entry) { return entry.id == id; });
    return found == all.end() ? nullptr : &*found;
}

QString Wallpaper::selected(const Platform &platform)
{
    return LauncherSettings::wallpaper.value(*platform.settings);
}

bool Wallpaper::isSet(const Platform &platform)
{
    const auto id = selected(platform);
    return preset(id) || (id == customId() && QImageReader(customFile(platform.folders)).canRead());
}

QString Wallpaper::customFile(const Folders &folders)
{
    return QuillnestFolders::data(folders) + QStringLiteral("/wallpaper");
}

QImage Wallpaper::image(const Platform &platform, const QString &id)
{
    return id == customId() ? QImage(customFile(platform.folders)) : QImage();
}

bool Wallpaper::keepPhoto(const QString &picture, const QString &file)
{
    QImageReader reader(picture);
    // Photos know which way up they were taken; the copy doesn't keep that.
    reader.setAutoTransform(true);
    const auto image = reader.read();
    if (image.isNull())
        return false;
    QDir().mkpath(QFileInfo(file).path());
    QSaveFile target(file);
    return target.open(QIODevice::WriteOnly) && image.save(&target, "JPEG", jpegQuality) && target.commit();
}

void Wallpaper::chooseCustom(const Platform &platform, std::function<void(bool)> done)
{
    QStringList extensions;
    for (const auto &format : QImageReader::supportedImageFormats())
        extensions.append(QString::fromLatin1(format));
    const OpenPanel panel{
        .title = QStringLiteral("Choose a wallpaper"), .kind = QStringLiteral("Images"), .extensions = extensions};
    platform.filePanels->open(
        panel,
        [executor = platform.executor, file = customFile(platform.folders),
         done = std::move(done)](const QList<QUrl> &chosen) {
            if (chosen.isEmpty()) {
                done(false);
                return;
            }
            executor->inBackground([executor, file, done, picture = chosen.first().toLocalFile()] {
                const bool kept = keepPhoto(picture, file);
                executor->onMain([done, kept] { done(kept); });
            });
        });
}

} // namespace quillnest
