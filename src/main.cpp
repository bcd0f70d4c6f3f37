// The composition root: builds the platform, wires the rooms, starts the application.

#include "core/QuillnestApp.h"
#include "launcher/Glyph.h"
#include "launcher/MenuPanel.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/TerminationSignals.h"
#include "windows/InterfaceStyle.h"
#include "windows/Palette.h"

#include <QApplication>
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

    const auto platform = linuxPlatform();
    const auto applyAppearance = [&platform] { QApplication::setPalette(Palette::current(platform).toolkitPalette()); };
    applyAppearance();
    QObject::connect(platform.appearance.get(), &Appearance::changed, &application, applyAppearance);
    QuillnestApp quillnest(platform);
    QObject::connect(&application, &QGuiApplication::focusWindowChanged, &quillnest, [&quillnest](QWindow *window) {
        if (window)
            quillnest.windowDidBecomeKey();
    });
    // Not by QApplication::quit, which would first ask every window to close as if its user had.
    const auto quit = [&quillnest] {
        quillnest.terminate();
        QCoreApplication::exit(0);
    };
    quillnest.start(
        QApplication::arguments(),
        {.makePanel
         = [&quillnest] { return new MenuPanel(quillnest.platform(), quillnest.store(), quillnest.icons()); },
         .paintPanel
         = [&quillnest] { return MenuPanel::snapshot(quillnest.platform(), quillnest.store(), quillnest.icons()); },
         .paintGlyph = [] { return glyphImage(128); },
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
