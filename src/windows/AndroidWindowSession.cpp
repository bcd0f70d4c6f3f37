#include "windows/AndroidWindowSession.h"

#include "base/QuillnestLayout.h"
#include "base/QuillnestSettings.h"
#include "runtime/AndroidVolume.h"
#include "windows/AndroidWindowRegistry.h"

#include <QPointer>
#include <QVBoxLayout>

namespace quillnest
{

namespace
{

bool isNumber(const QVariant &value)
{
    return value.typeId() == QMetaType::LongLong || value.typeId() == QMetaType::Int
        || value.typeId() == QMetaType::Double;
}

} // namespace

AndroidWindowSession::AndroidWindowSession(
    const WindowServices &services, AndroidWindowRegistry &registry, QUuid appID, QString package, QString title,
    const QString &adb, const QString &serial, const QString &server, std::optional<QRect> anchor)
    : m_services(services)
    , m_registry(registry)
    , m_appID(appID)
    , m_package(std::move(package))
    , m_title(std::move(title))
    , m_log(std::make_shared<QuillnestLog>(
          services.platform.clock, services.platform.folders.logs, QStringLiteral("native-%1.log").arg(m_package),
          true))
    , m_backWatch(m_services, m_package, [this] { leftByBack(); })
{
    const auto record = m_services.platform.settings->value(recordKey()).toMap();
    m_pinned = record.value(QStringLiteral("pinned")).toBool();
    const auto size = QuillnestLayout::size(*m_services.platform.settings).toSize();
    const auto origin = initialOrigin(size, anchor);

    m_panel = std::make_unique<AndroidAppPanel>(m_services.platform, AndroidAppPanel::Resizing::AtEdges);
    m_header = new HeaderView(m_services.platform, m_title, m_panel.get());
    m_videoView = new AndroidVideoView(m_services.platform, m_panel.get());
    m_panel->setFrame(QRect(origin, size));
    m_client = makeClient(adb, serial, server, size);
    configurePanel();
    wire();
}

AndroidWindowSession::~AndroidWindowSession()
{
    m_backWatch.stop();
    // The client lives on in its threads until they end; nobody is left to be told.
    m_client->stop();
}

QString AndroidWindowSession::recordKey() const
{
    return QStringLiteral("Quillnest.window.") + m_package;
}

QPoint AndroidWindowSession::initialOrigin(QSize size, std::optional<QRect> anchor) const
{
    const auto record = m_services.platform.settings->value(recordKey()).toMap();
    const auto x = record.value(QStringLiteral("x"));
    const auto y = record.value(QStringLiteral("y"));
    if (m_pinned && isNumber(x) && isNumber(y)) {
        const QPoint saved(x.toInt(), y.toInt());
        // A spot inside the upper left corner tells whether the screen is still there.
        for (const auto &screen : m_services.platform.screens->all()) {
            if (screen.visibleFrame.contains(saved + QPoint(20, 20)))
                return saved;
        }
    }
    if (anchor)
        return anchor->topLeft();
    const auto screen = m_services.platform.screens->main();
    if (!screen)
        return {0, 0};
    const auto visible = screen->visibleFrame;
    return {visible.x() + visible.width() - size.width() - 12, visible.y() + 6};
}

std::shared_ptr<AndroidStreamClient> AndroidWindowSession::makeClient(
    const QString &adb, const QString &serial, const QString &server, QSize panelSize) const
{
    const auto screen = m_services.platform.screens->main();
    const double scale = screen ? screen->backingScaleFactor : 2.0;
    const QSizeF video(panelSize.width(), panelSize.height() - QuillnestLayout::headerHeight);
    AndroidStreamClient::Config config;
    config.adb = adb;
    config.serial = serial;
    config.server = server;
    config.package = m_package;
    config.pixelSize = video * scale;
    // One density-independent pixel of Android is one point here.
    config.dpi = static_cast<int>(scale * 160);
    config.bitRate = 8000000;
    config.maxFPS = 60;
    return AndroidStreamClient::create(m_services.platform, config, m_videoView->renderer(), m_log);
}

void AndroidWindowSession::configurePanel()
{
    m_panel->setMinimumFrameSize(QuillnestLayout::minimumSize);
    m_panel->setWindowTitle(QStringLiteral("Quillnest · %1").arg(m_title));
    auto *content = new QVBoxLayout(m_panel.get());
    content->setContentsMargins(0, 0, 0, 0);
    content->setSpacing(0);
    content->addWidget(m_header);
    content->addWidget(m_videoView, 1);
    m_videoView->setClient(m_client);
    m_panel->setFloating(m_pinned);
    m_header->setPinned(m_pinned);
    m_header->setShadeAvailable(false);
    m_header->setCaptureAvailable(false);
}

void AndroidWindowSession::wire()
{
    m_header->onBack = [this] { handleBack(); };
    m_header->onSizeMenu = [this](QWidget *button) { showSizeMenu(button); };
    m_header->onHome = [this] { goHome(); };
    m_header->onPin = [this] { togglePinned(); };
    m_header->onHide = [this] { hide(); };
    m_header->onClose = [this] { close(QStringLiteral("close button")); };
    m_videoView->onBackRequest = [this] { handleBack(); };
    if (m_services.fileTransfer)
        m_videoView->onFilesDropped = [this](const QList<QUrl> &files) { receiveFiles(files); };

    m_panel->onResignKey = [this] { windowDidResignKey(); };
    m_panel->onBecomeKey = [this] { windowDidBecomeKey(); };
    m_panel->onMove = [this] { saveFrame(); };
    m_panel->onResize = [this] { windowDidResize(); };
    m_panel->onCloseRequest = [this] { close(QStringLiteral("window close (Cmd+W)")); };

    const QPointer<AndroidWindowSession> self(this);
    m_client->onFirstFrame = [self] {
        if (!self)
            return;
        const auto &services = self->m_services;
        services.log->write(QStringLiteral("native first frame package=%1").arg(self->m_package));
        // Android sets the volume anew when an app starts to play, so this comes a while after the start.
        services.platform.clock->later(
            std::chrono::milliseconds(1500), [executor = services.platform.executor, commands = services.commands] {
                executor->inBackground([commands] { AndroidVolume::maximize(*commands); });
            });
    };
    m_client->onEnded = [self](const std::optional<QString> &error) {
        if (self)
            self->streamEnded(error);
    };
}

void AndroidWindowSession::start()
{
    m_startedAt = m_services.platform.clock->monotonic();
    m_client->start();
    m_registry.setUnread(m_appID, false);
    show();
}

std::optional<double> AndroidWindowSession::firstShownSeconds() const
{
    const auto shownAt = m_videoView->counters().firstShownAt;
    return shownAt ? std::optional(secondsBetween(m_startedAt, *shownAt)) : std::nullopt;
}

void AndroidWindowSession::show()
{
    m_panel->orderFront();
    m_videoView->setFocus();
}

void AndroidWindowSession::hide()
{
    m_panel->orderOut();
    saveFrame();
    noteSeenIfLocked();
}

void AndroidWindowSession::noteSeenIfLocked()
{
    if (m_services.locks->isLocked(m_appID))
        m_services.locks->noteSeen(m_appID);
}

void AndroidWindowSession::close(const QString &reason)
{
    m_services.log->write(QStringLiteral("close package=%1 reason=%2").arg(m_package, reason));
    if (m_closing)
        return;
    m_services.runADBInBackground(
        {QStringLiteral("shell"), QStringLiteral("am"), QStringLiteral("force-stop"), m_package});
    m_closing = true;
    noteSeenIfLocked();
    m_backWatch.stop();
    m_registry.setUnread(m_appID, false);
    m_registry.setNowPlaying(std::nullopt, m_appID);
    saveFrame();
    m_panel->orderOut();
    m_client->stop();
}

void AndroidWindowSession::streamEnded(const std::optional<QString> &error)
{
    m_panel->orderOut();
    if (onEnded)
        onEnded(this, m_closing ? std::nullopt : error);
}

void AndroidWindowSession::handleBack()
{
    m_videoView->sendBack();
    m_backWatch.backSent();
}

void AndroidWindowSession::sendMediaKey(MediaAction action)
{
    const auto keycode = [action]() -> std::uint32_t {
        switch (action) {
        case MediaAction::previous:
            return 88;
        case MediaAction::playPause:
            return 85;
        case MediaAction::next:
            break;
        }
        return 87;
    }();
    m_client->send(ScrcpyControl::key(ScrcpyControl::KeyAction::down, keycode, 0));
    m_client->send(ScrcpyControl::key(ScrcpyControl::KeyAction::up, keycode, 0));
}

void AndroidWindowSession::receiveFiles(const QList<QUrl> &files)
{
    if (!m_services.fileTransfer || files.isEmpty())
        return;
    m_services.platform.executor->inBackground(
        [transfer = m_services.fileTransfer, files, package = m_package, displayID = m_client->displayID()] {
            transfer->push(files, package, displayID);
        });
}

void AndroidWindowSession::leftByBack()
{
    if (m_closing)
        return;
    const auto frame = m_panel->frame();
    m_services.log->write(QStringLiteral("back left %1: closing window, showing Quillnest home").arg(m_package));
    close(QStringLiteral("back on first screen"));
    m_registry.showMenuBarPopup(frame.topLeft());
}

void AndroidWindowSession::goHome()
{
    const auto frame = m_panel->frame();
    hide();
    m_registry.showMenuBarPopup(frame.topLeft());
}

void AndroidWindowSession::togglePinned()
{
    m_pinned = !m_pinned;
    m_panel->setFloating(m_pinned);
    m_header->setPinned(m_pinned);
    saveFrame();
}

void AndroidWindowSession::saveFrame()
{
    const auto frame = m_panel->frame();
    m_services.platform.settings->setValue(
        recordKey(),
        QVariantMap{
            {QStringLiteral("x"), frame.x()},
            {QStringLiteral("y"), frame.y()},
            {QStringLiteral("w"), frame.width()},
            {QStringLiteral("h"), frame.height()},
            {QStringLiteral("pinned"), m_pinned}});
}

void AndroidWindowSession::windowDidResignKey()
{
    const bool autoHide
        = QuillnestSettings::flag(*m_services.platform.settings, QStringLiteral("QuillnestAutoHide"), true);
    if (!m_pinned && !m_closing && autoHide)
        hide();
}

void AndroidWindowSession::windowDidBecomeKey()
{
    const int count = m_services.platform.pasteboard->changeCount();
    if (count == m_lastPasteboardChange)
        return;
    m_lastPasteboardChange = count;
    const auto text = m_services.platform.pasteboard->string().value_or(QString());
    if (!text.isEmpty())
        m_client->send(ScrcpyControl::setClipboard(text, false, m_client->nextClipboardSequence()));
}

} // namespace quillnest
