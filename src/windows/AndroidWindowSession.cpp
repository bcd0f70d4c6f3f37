#include "windows/AndroidWindowSession.h"

#include "base/QuillnestLayout.h"
#include "runtime/AndroidVolume.h"
#include "stream/ScrcpyControl.h"
#include "windows/AndroidVideoView.h"
#include "windows/HeaderView.h"
#include "windows/SizeMenu.h"
#include "windows/VideoInput.h"
#include "windows/WindowPlacement.h"
#include "windows/WindowSettings.h"

#include <QPointer>
#include <QVBoxLayout>

#include <cstdlib>
#include <utility>

namespace quillnest
{

namespace
{

constexpr std::chrono::milliseconds resizeSettles(250);
/// Smaller displays aren't asked for, in pixels.
constexpr int smallestDisplay = 101;

std::uint32_t keyCode(MediaAction action)
{
    switch (action) {
    case MediaAction::previous:
        return 88;
    case MediaAction::playPause:
        return 85;
    case MediaAction::next:
        break;
    }
    return 87;
}

} // namespace

AndroidWindowSession::AndroidWindowSession(
    const WindowServices &services, SessionSurroundings &surroundings, App app, const Device &device,
    std::optional<QRect> anchor)
    : m_services(services)
    , m_surroundings(surroundings)
    , m_app(std::move(app))
    , m_log(std::make_shared<QuillnestLog>(
          services.platform.clock, services.platform.folders.logs, QStringLiteral("native-%1.log").arg(m_app.package),
          true))
    , m_backWatch(m_services, m_app.package, [this] { leftByBack(); })
{
    const auto &platform = m_services.platform;
    const auto record = WindowPlacement::load(*platform.settings, m_app.package);
    m_pinned = record.isPinned;
    const auto frame = WindowPlacement::initialFrame(
        *platform.screens, record, QuillnestLayout::size(*platform.settings).toSize(), anchor,
        surroundings.windowCorners());

    m_panel = std::make_unique<AndroidAppPanel>(platform, AndroidAppPanel::Resizing::atEdges);
    m_content = new WindowContent(platform, m_app.title, m_panel.get());
    m_panel->setFrame(frame);
    m_client = makeClient(device, frame.size());
    configurePanel();
    wire();
}

AndroidWindowSession::~AndroidWindowSession()
{
    // The client lives on in its threads until they end; nobody is left to be told.
    m_client->stop();
    m_panel->disconnect(this);
}

std::shared_ptr<AndroidStreamClient> AndroidWindowSession::makeClient(const Device &device, QSize panelSize) const
{
    const auto screen = m_services.platform.screens->main();
    const double scale = screen ? screen->backingScaleFactor : 2.0;
    AndroidStreamClient::Config config;
    config.adb = device.adb;
    config.serial = device.serial;
    config.server = device.server;
    config.package = m_app.package;
    config.pixelSize = QSizeF(WindowContent::pictureSize(panelSize)) * scale;
    // One density-independent pixel of Android is one point here.
    config.dpi = static_cast<int>(scale * 160);
    config.bitRate = 8000000;
    config.maxFPS = 60;
    return AndroidStreamClient::create(
        m_services.platform, config, m_content->videoView().renderer(), m_log, m_services.streamThreads);
}

void AndroidWindowSession::configurePanel()
{
    m_panel->setMinimumFrameSize(QuillnestLayout::minimumSize);
    m_panel->setWindowTitle(QStringLiteral("Quillnest · %1").arg(m_app.title));
    auto *layout = new QVBoxLayout(m_panel.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_content);
    m_content->input().setSender(m_client);
    m_panel->setFloating(m_pinned);
    auto &header = m_content->header();
    header.setPinned(m_pinned);
    header.setShadeAvailable(false);
    header.setCaptureAvailable(false);
}

void AndroidWindowSession::wire()
{
    const auto &header = m_content->header();
    connect(&header, &HeaderView::backRequested, this, &AndroidWindowSession::handleBack);
    connect(&header, &HeaderView::sizeMenuRequested, this, &AndroidWindowSession::showSizeMenu);
    connect(&header, &HeaderView::homeRequested, this, &AndroidWindowSession::goHome);
    connect(&header, &HeaderView::pinToggled, this, &AndroidWindowSession::togglePinned);
    connect(&header, &HeaderView::hideRequested, this, &AndroidWindowSession::hide);
    connect(&header, &HeaderView::closeRequested, this, [this] { close(QStringLiteral("close button")); });
    m_content->input().onBackRequest = [this] { handleBack(); };
    if (m_services.fileTransfer)
        m_content->videoView().onFilesDropped = [this](const QList<QUrl> &files) { receiveFiles(files); };

    const auto *panel = m_panel.get();
    connect(panel, &AndroidAppPanel::resignedKey, this, &AndroidWindowSession::windowDidResignKey);
    connect(panel, &AndroidAppPanel::becameKey, this, &AndroidWindowSession::windowDidBecomeKey);
    connect(panel, &AndroidAppPanel::moved, this, &AndroidWindowSession::saveFrame);
    connect(panel, &AndroidAppPanel::resized, this, &AndroidWindowSession::windowDidResize);
    connect(panel, &AndroidAppPanel::shown, this, [this] { m_surroundings.sessionShown(*this); });
    connect(panel, &AndroidAppPanel::hidden, this, [this] { m_surroundings.sessionHidden(*this); });
    connect(panel, &AndroidAppPanel::closeRequested, this, [this] { close(QStringLiteral("window close (Cmd+W)")); });

    const QPointer<AndroidWindowSession> self(this);
    m_client->onConnected = [self] {
        if (!self)
            return;
        // The window got the keyboard before the device could be told of the clipboard.
        self->m_isConnected = true;
        // What it was told before the device could hear it.
        if (self->m_isResized)
            self->sendDisplaySize();
        if (self->m_panel->isActiveWindow())
            self->windowDidBecomeKey();
    };
    m_client->onFirstFrame = [self] {
        if (self)
            self->firstFrameCame();
    };
    m_client->onSnapshot = [self](const ImageBox &box) {
        if (self)
            self->stillCame(box.image);
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
    m_surroundings.setRead(m_app.id);
    show();
}

void AndroidWindowSession::firstFrameCame()
{
    m_services.log->write(QStringLiteral("native first frame package=%1").arg(m_app.package));
    // Android sets the volume anew when an app starts to play, so this comes a while after the start.
    m_services.platform.clock->later(
        std::chrono::milliseconds(1500), [executor = m_services.platform.executor, commands = m_services.commands] {
            executor->asUtility([commands] { AndroidVolume::maximize(*commands); });
        });
}

SessionCounters AndroidWindowSession::counters() const
{
    const auto &view = m_content->videoView();
    SessionCounters result;
    result.stream = m_client->statistics();
    result.renderer = view.renderer()->counters();
    result.view = view.counters();
    result.videoSize = m_client->videoSize().toSize();
    result.frame = m_panel->frame();
    result.videoArea = QRect(view.mapToGlobal(QPoint(0, 0)), view.size());
    result.scale = view.devicePixelRatioF();
    result.windowId = m_panel->winId();
    result.isActive = m_panel->isActiveWindow();
    result.isPinned = m_pinned;
    if (result.view.firstShownAt)
        result.firstShownSeconds = secondsBetween(m_startedAt, *result.view.firstShownAt);
    return result;
}

void AndroidWindowSession::show()
{
    m_panel->orderFront();
    m_content->videoView().setFocus();
}

void AndroidWindowSession::hide()
{
    m_panel->orderOut();
    saveFrame();
    noteSeenIfLocked();
}

void AndroidWindowSession::noteSeenIfLocked()
{
    if (m_services.locks->isLocked(m_app.id))
        m_services.locks->noteSeen(m_app.id);
}

void AndroidWindowSession::close(const QString &reason)
{
    m_services.log->write(QStringLiteral("close package=%1 reason=%2").arg(m_app.package, reason));
    if (m_closing)
        return;
    m_surroundings.forceStop(m_app.id, m_app.package);
    m_closing = true;
    noteSeenIfLocked();
    m_backWatch.stop();
    m_surroundings.setRead(m_app.id);
    m_surroundings.setSilent(m_app.id);
    saveFrame();
    m_panel->orderOut();
    m_client->stop();
}

void AndroidWindowSession::streamEnded(const std::optional<QString> &error)
{
    m_panel->orderOut();
    m_surroundings.sessionEnded(*this, m_closing ? std::nullopt : error);
}

void AndroidWindowSession::handleBack()
{
    m_content->input().sendBack();
    m_backWatch.backSent();
}

void AndroidWindowSession::paste()
{
    m_content->input().pasteFromMac();
}

void AndroidWindowSession::copy()
{
    send(ScrcpyControl::getClipboardCopy());
}

void AndroidWindowSession::sendMediaKey(MediaAction action)
{
    send(ScrcpyControl::key(ScrcpyControl::KeyAction::down, keyCode(action), 0));
    send(ScrcpyControl::key(ScrcpyControl::KeyAction::up, keyCode(action), 0));
}

void AndroidWindowSession::requestStill(std::function<void(const QImage &)> take)
{
    m_stillsWanted.push_back(std::move(take));
    m_client->requestSnapshot();
    // A key frame comes soon then.
    send(ScrcpyControl::resetVideo());
}

void AndroidWindowSession::stillCame(const QImage &still)
{
    // One picture serves all who wait, and one of them may ask again.
    for (const auto &take : std::exchange(m_stillsWanted, {}))
        take(still);
}

bool AndroidWindowSession::showMessage(const WindowMessage &message)
{
    if (!isVisible() || !m_messageDisplay)
        return false;
    m_messageDisplay(message);
    return true;
}

void AndroidWindowSession::setMessageDisplay(std::function<void(const WindowMessage &)> display)
{
    m_messageDisplay = std::move(display);
}

void AndroidWindowSession::receiveFiles(const QList<QUrl> &files)
{
    if (!m_services.fileTransfer || files.isEmpty())
        return;
    m_services.platform.executor->inBackground(
        [transfer = m_services.fileTransfer, files, package = m_app.package, displayID = displayID()] {
            transfer->push(files, package, displayID);
        });
}

void AndroidWindowSession::leftByBack()
{
    if (m_closing)
        return;
    const auto frame = m_panel->frame();
    m_services.log->write(QStringLiteral("back left %1: closing window, showing Quillnest home").arg(m_app.package));
    close(QStringLiteral("back on first screen"));
    m_surroundings.showLauncher(frame.topLeft());
}

void AndroidWindowSession::goHome()
{
    const auto frame = m_panel->frame();
    hide();
    m_surroundings.showLauncher(frame.topLeft());
}

void AndroidWindowSession::togglePinned()
{
    m_pinned = !m_pinned;
    m_panel->setFloating(m_pinned);
    m_content->header().setPinned(m_pinned);
    saveFrame();
}

void AndroidWindowSession::saveFrame()
{
    WindowPlacement::save(*m_services.platform.settings, m_app.package, m_panel->frame(), m_pinned);
}

void AndroidWindowSession::showSizeMenu(QWidget *from)
{
    SizeMenu menu(m_content->videoView().size());
    connect(
        &menu, &SizeMenu::picked, this, [this](const WindowSizePreset &preset) { m_surroundings.applySize(preset); });
    menu.exec(from->mapToGlobal(QPoint(0, from->height() + 4)));
}

void AndroidWindowSession::setPanelSize(QSizeF size)
{
    const auto frame = m_panel->frame();
    m_sizedAt = m_services.platform.clock->monotonic();
    m_panel->setFrame(WindowPlacement::fittedFrame(frame, size.toSize(), visibleFrame().value_or(frame)));
}

std::optional<QRect> AndroidWindowSession::visibleFrame() const
{
    return WindowPlacement::visibleFrame(*m_services.platform.screens, m_panel->frame().center());
}

void AndroidWindowSession::windowDidResignKey()
{
    if (!m_pinned && !m_closing && WindowSettings::autoHide.value(*m_services.platform.settings))
        hide();
}

void AndroidWindowSession::windowDidBecomeKey()
{
    const int count = m_services.platform.pasteboard->changeCount();
    if (!m_isConnected || count == m_lastPasteboardChange)
        return;
    m_lastPasteboardChange = count;
    // Only the user's own paste takes such a text into an app.
    if (m_services.platform.pasteboard->isSecret())
        return;
    const auto text = m_services.platform.pasteboard->string().value_or(QString());
    if (!text.isEmpty())
        send(ScrcpyControl::setClipboard(text, false, m_client->nextClipboardSequence()));
}

void AndroidWindowSession::windowDidResize()
{
    saveFrame();
    // A window that is cut to its screen isn't what its user chose; on a larger screen the choice comes back. A point
    // more or less comes from a screen whose pixels aren't whole parts of a point.
    auto &settings = *m_services.platform.settings;
    const auto visible = visibleFrame();
    const auto chosen = QuillnestLayout::size(settings).toSize();
    auto size = m_panel->frame().size();
    const auto change = size - (visible ? chosen.boundedTo(visible->size()) : chosen);
    if (std::abs(change.width()) <= 1)
        size.setWidth(chosen.width());
    if (std::abs(change.height()) <= 1)
        size.setHeight(chosen.height());
    // The window manager takes its time, and an older size may be told once more on the way.
    const auto now = m_services.platform.clock->monotonic();
    if (size != chosen && (!m_sizedAt || now - *m_sizedAt >= resizeSettles))
        QuillnestLayout::setSize(settings, size);
    // A drag sends one message, after it has stopped for a moment.
    m_resizeWork = m_services.platform.clock->after(resizeSettles, [this] { sendDisplaySize(); });
}

void AndroidWindowSession::sendDisplaySize()
{
    // From the frame: the widgets of a hidden window get their places when it is shown.
    const QSizeF picture = WindowContent::pictureSize(m_panel->frame().size());
    const auto display = AndroidStreamClient::displaySize(picture * m_panel->devicePixelRatioF());
    if (display.width() < smallestDisplay || display.height() < smallestDisplay)
        return;
    m_isResized = true;
    send(ScrcpyControl::resizeDisplay(display.width(), display.height()));
    m_log->write(QStringLiteral("Quillnest: resize display %1x%2").arg(display.width()).arg(display.height()));
}

} // namespace quillnest
