#pragma once

#include "base/MobileApp.h"

#include <QList>
#include <QObject>
#include <QUrl>

#include <optional>
#include <vector>

namespace quillnest
{

/// The library as features use it, which stand below the store: find an app, add, change, remove or launch one, and say
/// something to the user. Main thread.
class AppLibrary : public QObject
{
    Q_OBJECT

public:
    /// In stored order.
    virtual const std::vector<MobileApp> &apps() const = 0;
    virtual std::optional<MobileApp> find(QUuid id) const = 0;
    /// The first entry whose name contains the text; an empty text is contained in none.
    virtual std::optional<MobileApp> firstMatch(const QString &query) const = 0;
    /// Favourites and then the others, each sorted by display name.
    virtual std::vector<MobileApp> orderedApps() const = 0;

    /// Puts an entry behind the others. False if that could not be saved; then the user has been told.
    virtual bool add(const MobileApp &app) = 0;
    /// Adds files that the user chose, one after the other.
    virtual void addFiles(const QList<QUrl> &urls) = 0;
    /// Points the entry at another file of the same app.
    virtual void replaceSource(QUuid id, const QUrl &url, const QString &package) = 0;
    virtual void rename(QUuid id, const QString &name) = 0;
    /// Takes the entry out of the library. The app stays on the device and the file on this machine.
    virtual void remove(const MobileApp &app) = 0;

    /// What one click on the app does.
    virtual void launch(const MobileApp &app) = 0;

    /// Replaces the one line of text that the panel shows.
    virtual void say(const QString &message) = 0;

Q_SIGNALS:
    /// Entries came, went or changed.
    void appsChanged();
};

} // namespace quillnest
