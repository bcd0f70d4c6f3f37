#pragma once

#include "base/MobileApp.h"
#include "base/QuillnestLog.h"
#include "package/APKIconExtractor.h"
#include "platform/Platform.h"

#include <QImage>
#include <QObject>
#include <QUuid>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quillnest
{

/// The pictures of the apps, each read out of its package once, shown, and kept as a file from then on. What isn't said
/// to be for any thread is for the main thread, and never blocks it.
class AppIconStore : public QObject
{
    Q_OBJECT

public:
    using Bytes = std::vector<std::uint8_t>;
    using Icon = APKIconExtractor::Icon;
    using IconReader = std::function<std::optional<Icon>(const APKIconExtractor::IconTools &, const std::string &)>;

    /// Pictures that are larger are made smaller: no place shows more, and a library has hundreds.
    static constexpr int largestSide = 256;

    /// `iconReader` reads the icon that an APK's manifest names; it runs in the background.
    AppIconStore(
        const Platform &platform, std::shared_ptr<QuillnestLog> log, IconReader iconReader = &APKIconExtractor::icon);
    ~AppIconStore() override;

    /// The app's picture; null if it isn't there yet or there is none. The first call for an app begins to load it,
    /// with low priority. A load that failed is tried again in the next run.
    QImage image(const MobileApp &app);

    /// The pictures that are there.
    const std::map<QUuid, QImage> &images() const { return m_images; }

    /// The icon as a PNG file: the one that was kept, whatever became of the package since, or else the one found in
    /// the package, which is kept from then on. Absent, with a line in the log, if the package has none. Blocks. Any
    /// thread but the main one.
    std::optional<Bytes> loadIconData(QUuid id, const QString &sourcePath, MobilePlatform platform) const;

    /// The name of the entry of an archive that looks most like the icon; of equals the first. Absent if none does, or
    /// if a name isn't text. Blocks. Any thread but the main one.
    std::optional<QString> bestEntry(const QString &path, MobilePlatform platform) const;

    /// How much the name of an entry of an APK or of an IPA promises. Any thread.
    static int score(const QString &entry);
    static std::int64_t iosScore(const QString &entry);

Q_SIGNALS:
    /// The picture of an app has come.
    void imageChanged(QUuid id);

private:
    class Loader;

    Executor &m_executor;
    /// Shared with the loads that run, which may outlive the store.
    std::shared_ptr<const Loader> m_loader;
    std::set<QUuid> m_attempted;
    std::map<QUuid, QImage> m_images;
};

} // namespace quillnest
