#pragma once

#include "base/MobileApp.h"
#include "base/QuillnestLog.h"
#include "core/StatusLine.h"
#include "platform/SettingsStore.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace quillnest
{

/// The entries of the library and their copy in the settings, which are the same at any moment: a change that can't be
/// saved isn't made, and the status line says so. Main thread.
class StoredLibrary : public QObject
{
    Q_OBJECT

public:
    StoredLibrary(std::shared_ptr<SettingsStore> settings, std::shared_ptr<QuillnestLog> log, StatusLine &status);

    /// In stored order.
    const std::vector<MobileApp> &apps() const { return m_apps; }
    std::optional<MobileApp> find(QUuid id) const;
    std::optional<MobileApp> withSource(const QString &path) const;

    /// All of them sorted by display name, by the language's rules; favourites first if asked for. Equal names keep
    /// their stored order.
    enum class Order { favouritesFirst, byName };
    std::vector<MobileApp> sorted(Order order) const;

    /// False if it could not be saved.
    bool append(const MobileApp &app);
    /// Lets `edit` change the entry of the id, if there is one.
    bool change(QUuid id, const std::function<void(MobileApp &)> &edit);
    bool erase(QUuid id);

Q_SIGNALS:
    void changed();

private:
    void load();
    bool save(std::vector<MobileApp> apps);
    /// Puts a library that could not be read under another key, once; answers why that failed.
    std::optional<QString> keepUnreadable();

    const std::shared_ptr<SettingsStore> m_settings;
    const std::shared_ptr<QuillnestLog> m_log;
    StatusLine &m_status;
    std::vector<MobileApp> m_apps;
    /// What the settings hold in place of a library and isn't kept elsewhere yet.
    std::optional<QVariant> m_unreadable;
};

/// Whether a text holds another, as the user sees it: case doesn't matter. An empty text is held by none.
bool containsText(const QString &text, const QString &part);

} // namespace quillnest
