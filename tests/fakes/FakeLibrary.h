#pragma once

#include "base/AppLibrary.h"

#include <algorithm>

namespace quillnest
{

/// A library in memory for features under test. What is launched and said is kept in order.
class FakeLibrary : public AppLibrary
{
    Q_OBJECT

public:
    const std::vector<MobileApp> &apps() const override { return entries; }
    std::optional<MobileApp> find(QUuid id) const override
    {
        return first([id](const MobileApp &app) { return app.id == id; });
    }
    std::optional<MobileApp> firstMatch(const QString &query) const override
    {
        return first([&query](const MobileApp &app) {
            return !query.isEmpty() && app.name.contains(query, Qt::CaseInsensitive);
        });
    }
    std::vector<MobileApp> orderedApps() const override
    {
        auto ordered = entries;
        std::stable_sort(ordered.begin(), ordered.end(), [](const MobileApp &a, const MobileApp &b) {
            return a.isFavorite != b.isFavorite ? a.isFavorite : a.displayName() < b.displayName();
        });
        return ordered;
    }

    bool add(const MobileApp &app) override
    {
        if (refuses)
            return false;
        entries.push_back(app);
        Q_EMIT appsChanged();
        return true;
    }
    void addFiles(const QList<QUrl> &urls) override { files += urls; }
    void replaceSource(QUuid id, const QUrl &url, const QString &package) override
    {
        change(id, [&](MobileApp &app) {
            app.sourcePath = url.toLocalFile();
            app.bundleIdentifier = package;
        });
    }
    void rename(QUuid id, const QString &name) override
    {
        change(id, [&name](MobileApp &app) { app.name = name; });
    }
    void remove(const MobileApp &app) override
    {
        std::erase_if(entries, [id = app.id](const MobileApp &entry) { return entry.id == id; });
        Q_EMIT appsChanged();
    }
    void launch(const MobileApp &app) override { launched.push_back(app.id); }
    void say(const QString &message) override { said.append(message); }

    std::vector<MobileApp> entries;
    std::vector<QUuid> launched;
    QStringList said;
    QList<QUrl> files;
    /// As with a full disk.
    bool refuses = false;

private:
    template <typename Test> std::optional<MobileApp> first(Test test) const
    {
        const auto found = std::find_if(entries.begin(), entries.end(), test);
        return found == entries.end() ? std::nullopt : std::optional(*found);
    }
    template <typename Edit> void change(QUuid id, Edit edit)
    {
        for (auto &app : entries) {
            if (app.id == id)
                edit(app);
        }
        Q_EMIT appsChanged();
    }
};

} // namespace quillnest
