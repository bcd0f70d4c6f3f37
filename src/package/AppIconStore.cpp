#include "package/AppIconStore.h"

#include "base/QuillnestFolders.h"
#include "base/StrictUtf8.h"
#include "package/PackageLimits.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QSaveFile>

#include <limits>

namespace quillnest
{

namespace
{
QString lastComponent(const QString &path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

bool isCandidate(const QString &entry, MobilePlatform platform)
{
    const auto lower = entry.toLower();
    if (platform == MobilePlatform::ios) {
        return entry.startsWith(QStringLiteral("Payload/")) && entry.contains(QStringLiteral(".app/"))
            && lower.endsWith(QStringLiteral(".png"))
            && (entry.contains(QStringLiteral("AppIcon")) || entry.contains(QStringLiteral("Icon-")));
    }
    const auto leaf = lastComponent(lower);
    const auto beginsWith = [&leaf](const char *text) { return leaf.startsWith(QLatin1String(text)); };
    const auto contains = [&leaf](const char *text) { return leaf.contains(QLatin1String(text)); };
    return lower.startsWith(QStringLiteral("res/"))
        && (lower.endsWith(QStringLiteral(".png")) || lower.endsWith(QStringLiteral(".webp")))
        && (beginsWith("ic_launcher") || beginsWith("app_icon") || beginsWith("icon"))
        // Layers of an adaptive icon are no icons by themselves.
        && !contains("foreground") && !contains("background") && !contains("monochrome");
}

QImage picture(const Image &image)
{
    const QImage whole(
        reinterpret_cast<const uchar *>(image.pixels.data()), image.width, image.height, qsizetype{image.width} * 4,
        QImage::Format_ARGB32_Premultiplied);
    constexpr int side = AppIconStore::largestSide;
    if (image.width > side || image.height > side)
        return whole.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return whole.copy();
}
} // namespace

/// What a load needs, apart from the store.
class AppIconStore::Loader
{
public:
    Loader(const Platform &platform, std::shared_ptr<QuillnestLog> log, IconReader iconReader)
        : m_archives(platform.archives)
        , m_drawing(platform.drawing)
        , m_log(std::move(log))
        , m_iconReader(std::move(iconReader))
        , m_folder(QuillnestFolders::icons(platform.folders))
    {
    }

    QImage load(const MobileApp &app) const
    {
        const auto bytes = loadData(app.id, app.sourcePath, app.platform);
        const auto image = bytes ? m_drawing->decode(*bytes) : std::nullopt;
        return image ? picture(*image) : QImage();
    }

    std::optional<Bytes> loadData(QUuid id, const QString &sourcePath, MobilePlatform platform) const
    {
        const auto kept = m_folder + QLatin1Char('/') + uuidText(id) + QStringLiteral(".png");
        QFile file(kept);
        if (file.open(QIODevice::ReadOnly)) {
            const auto content = file.readAll();
            if (file.error() == QFileDevice::NoError)
                return Bytes(content.begin(), content.end());
        }

        const auto apk = lastComponent(sourcePath);
        if (platform == MobilePlatform::android) {
            const APKIconExtractor::IconTools tools{*m_archives, *m_drawing, [this](const std::string &line) {
                                                        m_log->write(QString::fromStdString(line));
                                                    }};
            if (auto png = m_iconReader(tools, sourcePath.toStdString())) {
                keep(kept, *png);
                m_log->write(QStringLiteral("icon: resolved via resources.arsc for %1").arg(apk));
                return png;
            }
        }

        const auto package = m_archives->open(sourcePath.toStdString());
        if (const auto entry = package ? bestEntry(*package, platform) : std::nullopt) {
            if (auto png = readEntry(*package, *entry)) {
                keep(kept, *png);
                m_log->write(QStringLiteral("icon: %1 from %2").arg(*entry, apk));
                return png;
            }
        }
        m_log->write(QStringLiteral("icon: none found in %1").arg(apk));
        return std::nullopt;
    }

    std::optional<QString> bestEntry(const QString &path, MobilePlatform platform) const
    {
        const auto package = m_archives->open(path.toStdString());
        return package ? bestEntry(*package, platform) : std::nullopt;
    }

private:
    static std::optional<QString> bestEntry(const OpenArchive &package, MobilePlatform platform)
    {
        std::optional<QString> best;
        std::int64_t bestScore = 0;
        for (const auto name : package.names()) {
            const auto entry = strictUtf8(QByteArray(name.data(), static_cast<qsizetype>(name.size())));
            if (!entry)
                return std::nullopt;
            if (!isCandidate(*entry, platform))
                continue;
            const auto points = platform == MobilePlatform::android ? score(*entry) : iosScore(*entry);
            if (!best || points > bestScore) {
                best = entry;
                bestScore = points;
            }
        }
        return best;
    }

    /// An entry as a PNG file, whatever kind of picture it is.
    std::optional<Bytes> readEntry(OpenArchive &package, const QString &entry) const
    {
        const auto bytes = package.read(entry.toStdString(), PackageLimits::largestEntry);
        const auto image = m_drawing->decode(bytes);
        return image ? m_drawing->encodePng(*image) : std::nullopt;
    }

    /// What can't be kept is read out of the package again in the next run.
    void keep(const QString &path, const Bytes &png) const
    {
        QDir().mkpath(m_folder);
        QSaveFile file(path);
        if (file.open(QIODevice::WriteOnly)) {
            file.write(reinterpret_cast<const char *>(png.data()), static_cast<qint64>(png.size()));
            file.commit();
        }
    }

    const std::shared_ptr<Archives> m_archives;
    const std::shared_ptr<Drawing> m_drawing;
    const std::shared_ptr<QuillnestLog> m_log;
    const IconReader m_iconReader;
    const QString m_folder;
};

AppIconStore::AppIconStore(const Platform &platform, std::shared_ptr<QuillnestLog> log, IconReader iconReader)
    : m_executor(*platform.executor)
    , m_loader(std::make_shared<const Loader>(platform, std::move(log), std::move(iconReader)))
{
}

AppIconStore::~AppIconStore() = default;

QImage AppIconStore::image(const MobileApp &app)
{
    const auto found = m_images.find(app.id);
    if (found != m_images.end())
        return found->second;
    if (!m_attempted.insert(app.id).second)
        return {};
    m_executor.asUtility([self = QPointer<AppIconStore>(this), loader = m_loader, &executor = m_executor, app] {
        const auto loaded = loader->load(app);
        executor.onMain([self, id = app.id, loaded] {
            if (!self || loaded.isNull())
                return;
            self->m_images.insert_or_assign(id, loaded);
            Q_EMIT self->imageChanged(id);
        });
    });
    return {};
}

std::optional<AppIconStore::Bytes>
AppIconStore::loadIconData(QUuid id, const QString &sourcePath, MobilePlatform platform) const
{
    return m_loader->loadData(id, sourcePath, platform);
}

std::optional<QString> AppIconStore::bestEntry(const QString &path, MobilePlatform platform) const
{
    return m_loader->bestEntry(path, platform);
}

int AppIconStore::score(const QString &entry)
{
    constexpr std::pair<const char *, int> densities[]
        = {{"-xxxhdpi", 50}, {"-xxhdpi", 40}, {"-xhdpi", 30}, {"-hdpi", 20}, {"-mdpi", 10}};
    int points = 0;
    for (const auto &[name, worth] : densities) {
        if (entry.contains(QLatin1String(name))) {
            points = worth;
            break;
        }
    }
    if (entry.contains(QStringLiteral("mipmap")))
        points += 5;
    if (!entry.contains(QStringLiteral("round")))
        points += 3;
    if (lastComponent(entry).startsWith(QStringLiteral("ic_launcher.")))
        points += 2;
    return points;
}

std::int64_t AppIconStore::iosScore(const QString &entry)
{
    const std::int64_t factor = entry.contains(QStringLiteral("@3x")) ? 3
        : entry.contains(QStringLiteral("@2x"))                       ? 2
                                                                      : 1;
    constexpr auto greatest = std::numeric_limits<std::int64_t>::max();
    std::optional<std::int64_t> number;
    const auto isDigit = [](QChar character) { return character >= QLatin1Char('0') && character <= QLatin1Char('9'); };
    for (qsizetype start = 0; start < entry.size() && !number;) {
        qsizetype end = start;
        while (end < entry.size() && isDigit(entry[end]))
            ++end;
        bool fits = false;
        const auto value = QStringView(entry).mid(start, end - start).toLongLong(&fits);
        if (fits)
            number = value;
        start = end + 1;
    }
    const auto first = number.value_or(0);
    return first > greatest / factor ? greatest : first * factor;
}

} // namespace quillnest
