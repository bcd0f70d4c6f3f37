// The composition root: builds the platform, wires the rooms, starts the application.

#include "core/QuillnestApp.h"
#include "features/adblock/AdBlock.h"
#include "features/darkmode/DarkMode.h"
#include "launcher/Glyph.h"
#include "launcher/LauncherCommands.h"
#include "launcher/MenuPanel.h"
#include "launcher/setup/RuntimeSetupView.h"
#include "look/Fonts.h"
#include "look/InterfaceStyle.h"
#include "look/Palette.h"
#include "platform/HostPlatform.h"
#include "platform/TerminationSignals.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QPointer>
#include <QWindow>

int main(int argc, char **argv)
{
    using namespace quillnest;
    TerminationSignals::block();
    QApplication application(argc, argv);
    const TerminationSignals termination;
    QApplication::setApplicationName(QStringLiteral("Quillnest"));
    QApplication::setDesktopFileName(QStringLiteral("app.quillnest.Quillnest"));
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(new InterfaceStyle);
    QApplication::setFont(interfaceFont(13));

    const auto platform = hostPlatform();
    const auto applyAppearance = [&platform] { QApplication::setPalette(Palette::current(platform).toolkitPalette()); };
    applyAppearance();
    QObject::connect(platform.appearance.get(), &Appearance::changed, &application, applyAppearance);
    QuillnestApp quillnest(platform);

    // The features, one line each.
    const AdBlock adBlock(quillnest.device(), *platform.settings, quillnest.commands());
    const DarkMode darkMode(quillnest.device(), quillnest.android(), quillnest.windows().events());

    handleLauncherCommands(quillnest.commands(), *platform.settings);
    QObject::connect(&application, &QGuiApplication::focusWindowChanged, &quillnest, [&quillnest](QWindow *window) {
        if (window)
            quillnest.windowDidBecomeKey();
    });
    // Not by QApplication::quit, which would first ask every window to close as if its user had.
    const auto quit = [&quillnest] {
        quillnest.terminate();
        QCoreApplication::exit(0);
    };
    // The store comes with the start and the panels after it.
    std::optional<PanelServices> panels;
    const auto services = [&]() -> const PanelServices & {
        if (!panels)
            panels.emplace(PanelServices{
                .platform = quillnest.platform(),
                .store = quillnest.store(),
                .icons = quillnest.icons(),
                .windows = quillnest.windows(),
                .locks = quillnest.locks(),
                .makeSetupView =
                    [&quillnest](QWidget *parent) {
                        return new RuntimeSetupView(quillnest.platform(), quillnest.provisioner(), parent);
                    },
                .quit = quit});
        return *panels;
    };
    QPointer<MenuPanel> panel;
    const auto reportTiles = [&panel] {
        QJsonArray tiles;
        if (!panel)
            return tiles;
        for (const auto &tile : panel->placedTiles()) {
            tiles.append(QJsonObject{
                {QStringLiteral("id"), uuidText(tile.id)},
                {QStringLiteral("name"), tile.name},
                {QStringLiteral("x"), tile.area.x()},
                {QStringLiteral("y"), tile.area.y()},
                {QStringLiteral("width"), tile.area.width()},
                {QStringLiteral("height"), tile.area.height()}});
        }
        return tiles;
    };
    quillnest.start(
        QApplication::arguments(),
        {.makePanel = [&] { return panel = new MenuPanel(services()); },
         .paintPanel = [&] { return MenuPanel::snapshot(services()); },
         .paintGlyph = [] { return glyphImage(128); },
         .reportTiles = reportTiles,
         .quit = quit});
    QObject::connect(&termination, &TerminationSignals::requested, &quillnest, quit);
    // The session manager's way to the end.
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &quillnest, &QuillnestApp::terminate);

    auto &windows = quillnest.windows();
    QApplication::setWindowIcon(glyphIcon(QColor(0x4C6FFF)));
    const auto togglePanel = [&windows] {
        if (windows.menuBarPopupFrame())
            windows.closeMenuBarPopup();
        else
            windows.showMenuBarPopup(std::nullopt);
    };
    const auto statusItem = platform.statusItems->add(
        glyphIcon(Palette::current(platform).label), QStringLiteral("Quillnest"), togglePanel,
        {{QStringLiteral("Show Apps"), [&windows] { windows.showMenuBarPopup(std::nullopt); }},
         {QStringLiteral("Quit Quillnest"), quit}});
    // Without a place for the status item the panel is the only way in.
    if (!platform.statusItems->isAvailable())
        windows.showMenuBarPopup(std::nullopt);
    return QApplication::exec();
}
