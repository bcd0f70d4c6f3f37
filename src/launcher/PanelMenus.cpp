#include "launcher/PanelMenus.h"

#include "look/PlainWords.h"

#include <QMenu>
#include <QPointer>

#include <cmath>

namespace quillnest
{

namespace
{

QMenu *makeMenu(QWidget *parent)
{
    auto *menu = new QMenu(parent);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    return menu;
}

void add(QMenu *menu, const QString &title, std::function<void()> action)
{
    QObject::connect(menu->addAction(plainMenuTitle(title)), &QAction::triggered, menu->parent(), std::move(action));
}

} // namespace

QMenu *PanelMenus::forApp(const PanelServices &services, const MobileApp &app, QWidget *parent)
{
    auto *menu = makeMenu(parent);
    auto &store = services.store;
    const bool running = store.runningAppIDs().contains(app.id);
    add(menu, running ? QStringLiteral("Show") : QStringLiteral("Open"), [&store, app] { store.launch(app); });
    if (running)
        add(menu, QStringLiteral("Close"), [&store, app] { store.close(app); });
    menu->addSeparator();
    add(menu, app.isFavorite ? QStringLiteral("Remove from favourites") : QStringLiteral("Add to favourites"),
        [&store, app] { store.toggleFavorite(app); });
    add(menu, QStringLiteral("Show APK in Files"),
        [&store, files = services.platform.fileManager, path = app.sourcePath] {
            files->reveal(path, [store = QPointer(&store), path](bool shown) {
                if (store && !shown)
                    store->say(QStringLiteral("There is no program that shows files. The APK is %1").arg(path));
            });
        });
    menu->addSeparator();
    add(menu, QStringLiteral("Remove from Quillnest"), [&store, app] { store.remove(app); });
    add(menu, QStringLiteral("Uninstall from Android…"), [&store, app] { store.confirmUninstall(app); });
    return menu;
}

QString PanelMenus::sizeTitle(const SettingsStore &settings, const WindowSizePreset &preset)
{
    const auto size = QuillnestLayout::size(settings);
    const bool chosen = std::abs(size.width() - preset.width) <= 1
        && std::abs(size.height() - QuillnestLayout::headerHeight - preset.height) <= 1;
    return (chosen ? QStringLiteral("✓ ") : QStringLiteral("    ")) + preset.label();
}

QMenu *PanelMenus::more(const PanelServices &services, const MoreActions &actions, QWidget *parent)
{
    auto *menu = makeMenu(parent);
    add(menu, QStringLiteral("Settings"), actions.showSettings);
    add(menu, QStringLiteral("Add APK…"), actions.importFiles);
    auto *sizes = menu->addMenu(QStringLiteral("Window size"));
    for (const auto &preset : QuillnestLayout::presets) {
        const auto *item = sizes->addAction(sizeTitle(*services.platform.settings, preset));
        QObject::connect(
            item, &QAction::triggered, parent, [&windows = services.windows, &preset] { windows.applySize(preset); });
    }
    add(menu, QStringLiteral("Close all apps"), [&windows = services.windows] { windows.closeAll(); });
    menu->addSeparator();
    add(menu, QStringLiteral("Quit Quillnest"), services.quit);
    return menu;
}

} // namespace quillnest
