#pragma once

#include "CoreFixture.h"
#include "core/LibraryFormat.h"

namespace quillnest
{

/// What a store shows, and what of it is kept.
class StoreFixture : public CoreFixture
{
protected:
    QByteArray stored() const { return fakes.settings->value(libraryKey).toByteArray(); }
    std::vector<MobileApp> storedApps() const { return LibraryFormat::decode(stored()).value(); }
    MobileApp named(const QString &name) const
    {
        for (const auto &app : store->apps()) {
            if (app.name == name)
                return app;
        }
        throw std::runtime_error("no such app");
    }
    QString status() const { return store->statusMessage(); }

    /// As it stands on disk.
    const QString libraryKey = QStringLiteral("Quillnest.apps.v1");
};

} // namespace quillnest
