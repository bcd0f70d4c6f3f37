// The composition root: builds the platform, wires the rooms, starts the application.

#include "base/QuillnestFolders.h"
#include "core/ArrangeOrder.h"
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
#include "platform/HostServices.h"
#include "platform/OwnFiles.h"
#include "platform/TerminationSignals.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QPointer>
#include <QScopeGuard>
#include <QWindow>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace
{

constexpr std::chrono::seconds latestEnd(10);

constexpr const char *help = "Usage: quillnest [OPTION...] [FILE...]\n"
                             "Runs Android apps in windows of their own. One program runs at a time: a later start\n"
                             "hands what it was asked for to the running one and ends.\n"
                             "\n"
                             "  FILE                 adds a package to the library\n"
                             "  --open-app TEXT      opens the first app whose name or file contains the text\n"
                             "  --launch-apk FILE    installs a package and opens it in the player window\n"
                             "  --android-player     opens the player window\n"
                             "  --arrange PROGRAM    puts another program's windows into a size, and ends\n"
                             "    --width NUMBER     how wide, in points (430)\n"
                             "    --height NUMBER    how high, in points (760)\n"
                             "  --help               prints this\n"
                             "  --version            prints the version\n";

/// Answers what needs no display; false for a start like any other.
bool answers(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        const bool asksForHelp = std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0;
        if (asksForHelp || std::strcmp(argv[i], "--version") == 0) {
            std::fputs(asksForHelp ? help : "quillnest " QUILLNEST_VERSION "\n", stdout);
            return true;
        }
    }
    return false;
}

/// The process is gone by then, whatever a thread of it is doing: an archive of gigabytes may be on its way to the
/// disk, or a disk may not answer. All that is written survives a kill at any moment.
void endWithin(std::chrono::seconds time)
{
    std::thread([time] {
        std::this_thread::sleep_for(time);
        std::_Exit(0);
    }).detach();
}

} // namespace

int main(int argc, char **argv)
{
    using namespace quillnest;
    if (answers(argc, argv))
        return 0;
    keepFilesPrivate();
    TerminationSignals::block();
    QApplication application(argc, argv);
    // Also while the main thread waits for something that doesn't answer, such as the display.
    const TerminationSignals termination([] { endWithin(latestEnd); });
    QApplication::setApplicationName(QStringLiteral("Quillnest"));
    QApplication::setDesktopFileName(QStringLiteral("app.quillnest.Quillnest"));
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(new InterfaceStyle);
    QApplication::setFont(interfaceFont(13));

    if (const auto order = ArrangeOrder::from(QApplication::arguments())) {
        QObject::connect(&termination, &TerminationSignals::requested, &application, &QCoreApplication::quit);
        const auto platform = hostPlatform();
        order->carryOut(platform, [] { QCoreApplication::exit(0); });
        return QApplication::exec();
    }
    const auto folders = hostFolders();
    for (const auto &folder : {QuillnestFolders::data(folders), folders.logs})
        closeToOthers(folder);
    switch (hostDoor()->enter(QuillnestFolders::data(folders), QApplication::arguments())) {
    case InstanceDoor::Entry::first:
        break;
    case InstanceDoor::Entry::handedOver:
        return 0;
    case InstanceDoor::Entry::noAnswer:
        std::fputs(
            "Quillnest is running but does not answer. Wait until it has finished, or end it, and try again.\n",
            stderr);
        return 1;
    }

    // Work that is still waiting for a tool keeps the platform; its children are ended all the same.
    std::shared_ptr<ChildProcesses> processes;
    const auto lastRuns = qScopeGuard([&processes] {
        processes->waitForRuns();
        // Work that still holds the platform must not take it down behind the application.
        std::fflush(nullptr);
        std::_Exit(0);
    });
    const auto platform = hostPlatform();
    processes = platform.processes;
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
    const auto terminate = [&quillnest] {
        endWithin(latestEnd);
        quillnest.terminate();
    };
    // Not by QApplication::quit, which would first ask every window to close as if its user had.
    const auto quit = [terminate] {
        terminate();
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
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &quillnest, terminate);

    auto &windows = quillnest.windows();
    QApplication::setWindowIcon(glyphIcon(glyphBlue));
    const auto togglePanel = [&windows] {
        if (windows.menuBarPopupFrame())
            windows.closeMenuBarPopup();
        else
            windows.showMenuBarPopup(std::nullopt);
    };
    const auto statusItem = platform.statusItems->add(
        glyphIcon(glyphBlue), QStringLiteral("Quillnest"), togglePanel,
        {{QStringLiteral("Show Apps"), [&windows] { windows.showMenuBarPopup(std::nullopt); }},
         {QStringLiteral("Quit Quillnest"), quit}});
    // Without a place for the status item the panel is the only way in.
    if (!platform.statusItems->isAvailable())
        windows.showMenuBarPopup(std::nullopt);
    return QApplication::exec();
}
