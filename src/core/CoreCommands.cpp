#include "core/CoreCommands.h"

#include "base/CommandDispatcher.h"
#include "core/AppLibraryStore.h"
#include "windows/AndroidWindowRegistry.h"

namespace quillnest
{

void handleCoreCommands(CommandDispatcher &commands, AppLibraryStore &store, AndroidWindowRegistry &windows)
{
    const auto forFirstWindow = [&windows](const std::function<void(AppSession &)> &act) {
        return [&windows, act](const QString &) {
            if (auto *session = windows.firstSession())
                act(*session);
        };
    };

    commands.handle(QStringLiteral("back"), forFirstWindow([](AppSession &session) { session.handleBack(); }));
    commands.handle(QStringLiteral("snapshot-menu"), [&store](const QString &) { store.writeMenuSnapshot(); });
    commands.handle(
        QStringLiteral("add:"), [&store](const QString &path) { store.addFiles({QUrl::fromLocalFile(path)}); });
    commands.handle(QStringLiteral("close-all"), [&windows](const QString &) { windows.closeAll(); });
    commands.handle(QStringLiteral("media"), [&store, &windows](const QString &) {
        const auto appID = store.nowPlayingAppID();
        if (auto *session = appID ? windows.session(*appID) : nullptr)
            session->sendMediaKey(MediaAction::playPause);
    });
    commands.handle(QStringLiteral("paste"), forFirstWindow([](AppSession &session) { session.paste(); }));
    commands.handle(QStringLiteral("copy"), forFirstWindow([](AppSession &session) { session.copy(); }));
    commands.handle(QStringLiteral("android-version:"), [&store](const QString &text) {
        bool isNumber = false;
        const int api = text.toInt(&isNumber);
        if (isNumber)
            store.switchAndroidVersion(api);
    });
    commands.handle(QStringLiteral("home"), [&windows](const QString &) { windows.showMenuBarPopup(std::nullopt); });
    commands.handle(QStringLiteral("hide"), forFirstWindow([](AppSession &session) { session.hide(); }));
    commands.handle(QStringLiteral("open:"), [&store](const QString &query) {
        if (const auto app = store.firstMatch(query))
            store.launch(*app);
    });
}

} // namespace quillnest
