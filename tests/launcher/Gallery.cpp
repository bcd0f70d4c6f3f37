// quillnest-gallery FOLDER: paints the launcher in its states as PNG files.

#include "GalleryIcons.h"
#include "LaunchFixture.h"
#include "core/LibraryFormat.h"
#include "fakes/IconOfFile.h"
#include "launcher/MenuPanel.h"
#include "launcher/grid/AppGrid.h"
#include "launcher/setup/RuntimeSetupView.h"
#include "launcher/wallpaper/Wallpaper.h"
#include "look/Fonts.h"
#include "look/InterfaceStyle.h"
#include "look/Palette.h"
#include "platform/HostPlatform.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QRadialGradient>

#include <cstdio>

using namespace quillnest;

namespace
{

const QStringList &commonNames()
{
    static const QStringList names
        = QStringLiteral("Tide|Ember|Lantern|Weather|Notes|Podcasts|Maps|Chess|Radio|Wallet|Transit|"
                         "Kitchen|Garden|Fitness|Piano|Puzzle|Words|Paint|Budget|Calendar|Reader|Comics|"
                         "Scanner|Torch|Compass|Timer|Translate|Recipes|Birds|Stars|Trails|Surf|Market|"
                         "Tickets|Hotels|Flights|Photos|Camera|Mail|Chat")
              .split(QLatin1Char('|'));
    return names;
}

/// Long ones, and those of other scripts.
const QStringList &hardNames()
{
    static const QStringList names{
        QStringLiteral("Interplanetary Weather Station Deluxe"),
        QStringLiteral("Donaudampfschifffahrtsgesellschaft"),
        QStringLiteral("File_Manager-2.4.1"),
        QStringLiteral("تطبيق الطقس"),
        QStringLiteral("מזג אוויר"),
        QStringLiteral("😀 Smile"),
        QStringLiteral("天気"),
        QStringLiteral("地図 アプリ"),
        QStringLiteral("Погода"),
        QStringLiteral("Ελληνικό ημερολόγιο"),
        QStringLiteral("Fish & Chips"),
        QStringLiteral("-_-"),
        QStringLiteral("Two-Words")};
    return names;
}

struct Setting {
    const char *key;
    QVariant value;
};

enum class SetupStage { none, consent, licence, download, failure };

struct Scene {
    const char *name;
    const char *caption;
    int apps = 9;
    bool dark = false;
    double scale = 2;
    QSize size{390, 760};
    std::vector<Setting> settings = {};
    bool hardNames = false;
    /// A part of the apps has no picture.
    bool monograms = false;
    QString search = {};
    bool inUse = false;
    bool launching = false;
    bool settingsPage = false;
    bool dropping = false;
    bool ready = false;
    SetupStage setup = SetupStage::none;
    /// The third app has just failed to start.
    bool failed = false;
    bool keyboard = false;
    bool mirrored = false;
};

/// A photo to choose: evening over hills.
void writePhoto(const QString &path)
{
    QImage image(1200, 1600, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient sky(0, 0, 0, 1600);
    sky.setColorAt(0, QColor(0x1B2A6B));
    sky.setColorAt(0.45, QColor(0xD9607A));
    sky.setColorAt(0.62, QColor(0xFFC27A));
    sky.setColorAt(0.63, QColor(0x2D3B2A));
    sky.setColorAt(1, QColor(0x11180F));
    painter.fillRect(image.rect(), sky);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xFFF1C9));
    painter.drawEllipse(QPointF(820, 840), 120, 120);
    painter.end();
    image.save(path, "PNG");
}

QByteArray package(const QByteArray &path, const QByteArray &name, const QByteArray &size)
{
    return "<remotePackage path='" + path + "'><revision><major>3</major></revision><display-name>" + name
        + "</display-name><uses-license ref='android-sdk-license'/><archives><archive><complete><size>" + size
        + "</size><checksum>00</checksum><url>a.zip</url></complete></archive></archives></remotePackage>";
}

/// A store and a panel of a scene.
class Stage : public LaunchFixture
{
public:
    void TestBody() override { }

    /// The user's photo, for the scenes that show it.
    void putPhoto()
    {
        const auto picture = fakes.path(QStringLiteral("photo.png"));
        writePhoto(picture);
        Wallpaper::keepPhoto(picture, Wallpaper::customFile(fakes.platform.folders));
    }

    QImage paint(const Scene &scene)
    {
        prepare(scene);
        AppIconStore icons(fakes.platform, log, [&](const APKIconExtractor::IconTools &, const std::string &path) {
            const auto name = QFileInfo(QString::fromStdString(path)).completeBaseName();
            if (scene.monograms)
                return std::optional<APKIconExtractor::Icon>();
            const auto png = galleryIcon(name);
            return iconOfFile(*fakes.platform.drawing, {png.begin(), png.end()});
        });
        const PanelServices services{
            .platform = fakes.platform,
            .store = *store,
            .icons = icons,
            .windows = *registry,
            .makeSetupView
            = [this](QWidget *parent) { return new RuntimeSetupView(fakes.platform, *provisioner, parent); }};
        MenuPanel panel(services);
        if (scene.mirrored)
            panel.setLayoutDirection(Qt::RightToLeft);
        panel.resize(scene.size);
        use(scene);
        panel.show();
        fakes.settle();
        if (scene.settingsPage)
            panel.setShowSettings(true);
        goOn(scene.setup, panel);
        if (!scene.search.isEmpty())
            store->setSearch(scene.search);
        if (scene.keyboard) {
            auto *grid = panel.findChild<AppGrid *>();
            panel.activateWindow();
            grid->setFocus(Qt::TabFocusReason);
            grid->setCurrent(5);
        }
        QMimeData files;
        if (scene.dropping) {
            files.setUrls({QUrl::fromLocalFile(QStringLiteral("/tide.apk"))});
            QDragEnterEvent enter(QPoint(50, 300), Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(&panel, &enter);
        }
        // The first look asks for the pictures.
        grab(panel, scene.scale);
        fakes.settle();
        const auto image = grab(panel, scene.scale);
        panel.hide();
        registry->closeAll();
        fakes.settle();
        return image;
    }

private:
    static QImage grab(QWidget &panel, double scale)
    {
        QImage image((QSizeF(panel.size()) * scale).toSize(), QImage::Format_RGB32);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::white);
        panel.render(&image, {}, {}, QWidget::DrawChildren);
        return image;
    }

    void prepare(const Scene &scene)
    {
        fakes.platform.symbols = hostSymbols();
        fakes.appearance->setDark(scene.dark);
        QApplication::setPalette(Palette::current(fakes.platform).toolkitPalette());
        fakes.clock->setWallTime(QDateTime(QDate(2026, 5, 14), QTime(9, 41)).toUTC());
        for (const auto &setting : scene.settings)
            fakes.settings->setValue(QLatin1String(setting.key), setting.value);
        std::vector<MobileApp> apps;
        const auto &names = scene.hardNames ? ::hardNames() : commonNames();
        for (int i = 0; i < scene.apps; ++i) {
            MobileApp app;
            app.id = QUuid::createUuid();
            app.name = names.at(i % names.size());
            if (i >= names.size())
                app.name += QStringLiteral(" %1").arg(QChar(static_cast<char16_t>(u'A' + i / names.size())));
            app.sourcePath = QStringLiteral("/apps/%1.apk").arg(app.name);
            app.bundleIdentifier = QStringLiteral("org.example.app%1").arg(i);
            app.addedAt = fakes.clock->wallTime();
            app.isFavorite = i == 0 || i == 4 || i == 7;
            if (scene.hardNames && i == 2)
                app.platform = MobilePlatform::ios;
            apps.push_back(app);
        }
        fakes.settings->setValue(QStringLiteral("Quillnest.apps.v1"), LibraryFormat::encode(apps));
        if (scene.setup != SetupStage::none) {
            for (const auto &path : {paths.systemImage(), paths.adb(), paths.emulator()})
                QFile::remove(path);
        }
        if (scene.setup != SetupStage::failure)
            serve();
        network->failure = QStringLiteral("Host dl.google.com not found");
        if (scene.ready || scene.inUse || scene.failed)
            deviceIsUp();
        makeStore();
        store->refreshAndroidState();
        fakes.settle();
    }

    /// What the setup downloads.
    void serve()
    {
        const auto folder = QStringLiteral("https://dl.google.com/android/repository/");
        const auto terms = "<license id='android-sdk-license'>"
            + QByteArray("Here stand the terms, as Google's list has them. ").repeated(60) + "</license>";
        network->answers[folder + QStringLiteral("repository2-3.xml")]
            = {200,
               "<r>" + terms + package("platform-tools", "Android SDK Platform-Tools", "6500000")
                   + package("emulator", "Android Emulator", "300000000") + "</r>"};
        network->answers[folder + QStringLiteral("sys-img/android/sys-img2-3.xml")]
            = {200,
               "<r>" + terms + package("system-images;android-35;default;x86_64", "Android system image", "1200000000")
                   + "</r>"};
    }

    void goOn(SetupStage setup, QWidget &panel)
    {
        if (setup == SetupStage::licence) {
            for (auto *button : panel.findChildren<QAbstractButton *>()) {
                if (button->accessibleName() == QStringLiteral("Read licence…"))
                    button->click();
            }
        }
        if (setup == SetupStage::download) {
            provisioner->acceptAndInstall();
            fakes.settle();
            network->downloads.at(0)->events.onWrite(4200000, 6500000);
        }
    }

    void use(const Scene &scene)
    {
        const auto &apps = store->apps();
        if (scene.inUse) {
            registry->open(apps[0].id, *apps[0].bundleIdentifier, apps[0].name, {});
            registry->setNowPlaying(AndroidMedia{QStringLiteral("Nocturne No. 2"), {}, true}, apps[0].id);
            registry->setUnread(apps[3].id, true);
            registry->setUnread(apps[5].id, true);
        }
        if (scene.failed) {
            store->launch(MobileApp(apps[2]));
            fakes.runUntil([this] { return !store->launchingAppID(); });
        }
        if (scene.launching) {
            cleanDevice();
            store->launch(MobileApp(apps[2]));
        }
    }
};

std::vector<Scene> scenes()
{
    const auto theme = [](const char *name) { return Setting{"QuillnestTheme", QString(QLatin1String(name))}; };
    const auto paper = [](const char *name) { return Setting{"QuillnestWallpaper", QString(QLatin1String(name))}; };
    return {
        {.name = "classic-light", .caption = "Classic", .apps = 14, .ready = true},
        {.name = "classic-dark", .caption = "Classic, dark", .apps = 14, .dark = true, .inUse = true},
        {.name = "oneui-light", .caption = "One UI style", .apps = 14, .settings = {theme("oneui")}},
        {.name = "ios-dark", .caption = "iOS style, dark", .apps = 14, .dark = true, .settings = {theme("ios")}},
        {.name = "pixel-light", .caption = "Pixel style", .apps = 14, .settings = {theme("pixel")}},
        {.name = "pixel-dark", .caption = "Pixel style, dark", .apps = 14, .dark = true, .settings = {theme("pixel")}},
        {.name = "empty", .caption = "No apps", .apps = 0},
        {.name = "setup", .caption = "Before Android is set up", .setup = SetupStage::consent},
        {.name = "setup-licence", .caption = "What the user agrees to", .setup = SetupStage::licence},
        {.name = "setup-licence-dark",
         .caption = "What the user agrees to, dark",
         .dark = true,
         .scale = 1,
         .setup = SetupStage::licence},
        {.name = "setup-download", .caption = "Android is fetched", .dark = true, .setup = SetupStage::download},
        {.name = "setup-failure", .caption = "A setup without a network", .scale = 1, .setup = SetupStage::failure},
        {.name = "failed", .caption = "An app did not start", .failed = true},
        {.name = "one-app", .caption = "One app", .apps = 1, .scale = 1},
        {.name = "launching", .caption = "An app is being opened", .apps = 9, .dark = true, .launching = true},
        {.name = "in-use", .caption = "An app is open and plays; others have news", .apps = 12, .inUse = true},
        {.name = "search", .caption = "A search", .apps = 60, .search = QStringLiteral("t")},
        {.name = "search-nothing",
         .caption = "A search in vain",
         .apps = 9,
         .scale = 1,
         .search = QStringLiteral("xyz")},
        {.name = "names", .caption = "Long names and other scripts", .apps = 13, .hardNames = true, .monograms = true},
        {.name = "names-oneui",
         .caption = "The same on two lines",
         .apps = 13,
         .dark = true,
         .settings = {theme("oneui"), paper("midnight")},
         .hardNames = true,
         .monograms = true},
        {.name = "wallpaper-aurora", .caption = "Aurora", .apps = 14, .dark = true, .settings = {paper("aurora")}},
        {.name = "wallpaper-sunset", .caption = "Sunset", .apps = 14, .settings = {paper("sunset"), theme("ios")}},
        {.name = "wallpaper-ocean",
         .caption = "Ocean",
         .apps = 14,
         .scale = 1.5,
         .settings = {paper("ocean"), theme("oneui")}},
        {.name = "wallpaper-photo",
         .caption = "A photo",
         .apps = 14,
         .dark = true,
         .settings = {paper("custom"), theme("pixel")},
         .inUse = true},
        {.name = "settings", .caption = "Settings", .apps = 9, .settingsPage = true},
        {.name = "settings-dark",
         .caption = "Settings on a wallpaper",
         .apps = 9,
         .dark = true,
         .settings = {paper("forest")},
         .settingsPage = true},
        {.name = "drop", .caption = "Files are held over the panel", .apps = 9, .scale = 1, .dropping = true},
        {.name = "narrow", .caption = "As narrow as it gets", .apps = 60, .scale = 1.5, .size = {280, 420}},
        {.name = "wide",
         .caption = "Wide, 500 apps, with the keyboard",
         .apps = 500,
         .scale = 1,
         .size = {900, 700},
         .keyboard = true},
        {.name = "mirrored",
         .caption = "From right to left",
         .apps = 13,
         .scale = 1,
         .hardNames = true,
         .mirrored = true},
    };
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "en_GB.UTF-8");
    QApplication application(argc, argv);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    QApplication::setStyle(new InterfaceStyle);
    QApplication::setFont(interfaceFont(13));
    const auto arguments = QApplication::arguments();
    if (arguments.size() < 2 || !QDir().mkpath(arguments[1])) {
        std::fputs("usage: quillnest-gallery FOLDER [NAME...]\n", stderr);
        return 2;
    }
    const auto wanted = arguments.mid(2);
    for (const auto &scene : scenes()) {
        if (!wanted.isEmpty() && !wanted.contains(QLatin1String(scene.name)))
            continue;
        Stage stage;
        stage.putPhoto();
        const auto image = stage.paint(scene);
        if (!image.save(QStringLiteral("%1/%2.png").arg(arguments[1], QLatin1String(scene.name)), "PNG", 0))
            return 1;
        std::printf("%s: %s\n", scene.name, scene.caption);
    }
    return 0;
}
