#include "package/AppIconStore.h"

#include "base/StrictUtf8.h"
#include "package/IconFiles.h"
#include "package/PackageLimits.h"

#include <QPointer>

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

/// As it is shown. A picture that is small enough stays in the memory that it came in.
QImage shown(std::shared_ptr<const AppIconStore::Icon> icon)
{
    const auto &[width, height, pixels] = icon->picture;
    const auto *start = reinterpret_cast<const uchar *>(pixels.data());
    constexpr int side = AppIconStore::largestSide;
    constexpr auto format = QImage::Format_ARGB32_Premultiplied;
    if (width > side || height > side)
        return QImage(start, width, height, qsizetype{width} * 4, format)
            .scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    using Owner = std::shared_ptr<const AppIconStore::Icon>;
    const auto release = [](void *owner) { delete static_cast<Owner *>(owner); };
    const int columns = width;
    const int rows = height;
    return {start, columns, rows, qsizetype{columns} * 4, format, release, new Owner(std::move(icon))};
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
        , m_files(std::make_shared<IconFiles>(platform))
    {
    }

    /// Hands over the picture as soon as there is one. Packing it and writing its file takes longer than finding it,
    /// and nobody waits for that.
    void load(const MobileApp &app, const std::function<void(const QImage &)> &show) const
    {
        if (const auto kept = m_files->read(app.id)) {
            if (auto image = m_drawing->decode(*kept))
                show(shown(std::make_shared<const Icon>(Icon{std::move(*image), {}})));
            return;
        }
        const auto icon = find(app.sourcePath, app.platform);
        if (!icon)
            return;
        const auto picture = shown(icon);
        show(picture);
        // Those that wait to be kept take no memory of their own, so any number of them may.
        if (picture.constBits() == reinterpret_cast<const uchar *>(icon->picture.pixels.data()))
            m_files->keepLater(app.id, icon);
        else
            m_files->keep(app.id, *icon);
    }

    std::optional<Bytes> loadData(QUuid id, const QString &sourcePath, MobilePlatform platform) const
    {
        if (auto kept = m_files->read(id))
            return kept;
        const auto icon = find(sourcePath, platform);
        return icon ? m_files->keep(id, *icon) : std::nullopt;
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

    std::shared_ptr<const Icon> find(const QString &sourcePath, MobilePlatform platform) const
    {
        const auto apk = lastComponent(sourcePath);
        if (platform == MobilePlatform::android) {
            const APKIconExtractor::IconTools tools{*m_archives, *m_drawing, [this](const std::string &line) {
                                                        m_log->write(QString::fromStdString(line));
                                                    }};
            if (auto icon = m_iconReader(tools, sourcePath.toStdString())) {
                m_log->write(QStringLiteral("icon: resolved via resources.arsc for %1").arg(apk));
                return std::make_shared<const Icon>(std::move(*icon));
            }
        }

        const auto package = m_archives->open(sourcePath.toStdString());
        if (const auto entry = package ? bestEntry(*package, platform) : std::nullopt) {
            // Kept as a PNG file, whatever kind of picture it is.
            const auto bytes = package->read(entry->toStdString(), PackageLimits::largestEntry);
            if (auto image = m_drawing->decode(bytes)) {
                m_log->write(QStringLiteral("icon: %1 from %2").arg(*entry, apk));
                return std::make_shared<const Icon>(Icon{std::move(*image), {}});
            }
        }
        m_log->write(QStringLiteral("icon: none found in %1").arg(apk));
        return nullptr;
    }

    const std::shared_ptr<Archives> m_archives;
    const std::shared_ptr<Drawing> m_drawing;
    const std::shared_ptr<QuillnestLog> m_log;
    const IconReader m_iconReader;
    const std::shared_ptr<IconFiles> m_files;
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
        loader->load(app, [&](const QImage &picture) {
            executor.onMain([self, id = app.id, picture] {
                if (!self || picture.isNull())
                    return;
                self->m_images.insert_or_assign(id, picture);
                Q_EMIT self->imageChanged(id);
            });
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
