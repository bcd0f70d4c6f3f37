#include "core/StoredLibrary.h"

#include "core/CoreSettings.h"
#include "core/LibraryFormat.h"

#include <QCollator>

#include <algorithm>

namespace quillnest
{

namespace
{
/// An accent may be a character of its own or part of its letter; both look the same.
QString composed(const QString &text)
{
    return text.normalized(QString::NormalizationForm_C);
}
} // namespace

bool containsText(const QString &text, const QString &part)
{
    return !part.isEmpty() && composed(text).contains(composed(part), Qt::CaseInsensitive);
}

StoredLibrary::StoredLibrary(
    std::shared_ptr<SettingsStore> settings, std::shared_ptr<QuillnestLog> log, StatusLine &status)
    : m_settings(std::move(settings)), m_log(std::move(log)), m_status(status)
{
    load();
}

void StoredLibrary::load()
{
    const auto key = CoreSettings::apps.key();
    const auto value = m_settings->value(key);
    if (!value.isValid())
        return;
    const bool isData = value.typeId() == QMetaType::QByteArray;
    if (auto apps = isData ? LibraryFormat::decode(value.toByteArray()) : std::nullopt) {
        // What was read counts whether or not it can be written again.
        m_apps = *apps;
        save(std::move(*apps));
        return;
    }
    // The next save would destroy it for good.
    m_unreadable = value;
    keepUnreadable();
}

std::optional<QString> StoredLibrary::keepUnreadable()
{
    if (!m_unreadable)
        return std::nullopt;
    // What an earlier start has kept stays, too.
    int number = 1;
    while (m_settings->value(CoreSettings::unreadableApps.key(QString::number(number))).isValid()
           && m_settings->value(CoreSettings::unreadableApps.key(QString::number(number))) != *m_unreadable)
        ++number;
    const auto key = CoreSettings::unreadableApps.key(QString::number(number));
    const auto failure = m_settings->setValue(key, *m_unreadable);
    m_log->write(
        failure ? QStringLiteral("library unreadable, not kept aside error=%1").arg(*failure)
                : QStringLiteral("library unreadable, kept aside as %1").arg(key));
    if (!failure)
        m_unreadable.reset();
    return failure;
}

bool StoredLibrary::save(std::vector<MobileApp> apps)
{
    auto failure = keepUnreadable();
    if (!failure)
        failure = m_settings->setValue(CoreSettings::apps.key(), LibraryFormat::encode(apps));
    if (failure) {
        m_log->write(QStringLiteral("library not saved error=%1").arg(*failure));
        m_status.say(QStringLiteral("Could not save the library: %1").arg(*failure));
        return false;
    }
    m_apps = std::move(apps);
    Q_EMIT changed();
    return true;
}

bool StoredLibrary::append(const MobileApp &app)
{
    auto apps = m_apps;
    apps.push_back(app);
    return save(std::move(apps));
}

bool StoredLibrary::change(QUuid id, const std::function<void(MobileApp &)> &edit)
{
    auto apps = m_apps;
    const auto found = std::find_if(apps.begin(), apps.end(), [id](const MobileApp &app) { return app.id == id; });
    if (found == apps.end())
        return true;
    edit(*found);
    return save(std::move(apps));
}

bool StoredLibrary::erase(QUuid id)
{
    auto apps = m_apps;
    std::erase_if(apps, [id](const MobileApp &entry) { return entry.id == id; });
    return save(std::move(apps));
}

std::optional<MobileApp> StoredLibrary::find(QUuid id) const
{
    const auto found = std::find_if(m_apps.begin(), m_apps.end(), [id](const MobileApp &app) { return app.id == id; });
    return found == m_apps.end() ? std::nullopt : std::optional(*found);
}

std::optional<MobileApp> StoredLibrary::withSource(const QString &path) const
{
    const auto found
        = std::find_if(m_apps.begin(), m_apps.end(), [&path](const MobileApp &app) { return app.sourcePath == path; });
    return found == m_apps.end() ? std::nullopt : std::optional(*found);
}

std::vector<MobileApp> StoredLibrary::sorted(Order order) const
{
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    // A locale without rules of its own doesn't know what a collator's case sensitivity means, so case goes first.
    // The sort key holds what the display name and the locale make of an app, so each is worked out once.
    struct Keyed {
        QCollatorSortKey key;
        const MobileApp *app;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(m_apps.size());
    for (const auto &app : m_apps)
        keyed.push_back({collator.sortKey(composed(app.displayName()).toCaseFolded()), &app});
    std::stable_sort(keyed.begin(), keyed.end(), [order](const Keyed &a, const Keyed &b) {
        if (order == Order::favouritesFirst && a.app->isFavorite != b.app->isFavorite)
            return a.app->isFavorite;
        return a.key < b.key;
    });
    std::vector<MobileApp> result;
    result.reserve(keyed.size());
    for (const auto &entry : keyed)
        result.push_back(*entry.app);
    return result;
}

} // namespace quillnest
