#include "windows/AndroidMirrorModel.h"

#include "base/FireAndForget.h"
#include "platform/Files.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageReader>
#include <QPointer>

namespace quillnest
{

namespace
{

const auto serial = QStringLiteral("emulator-5556");
constexpr std::chrono::milliseconds frameInterval{450};
constexpr std::chrono::seconds bootPollInterval{1};
/// A device that isn't up by then is not waited for; it may still come while pictures are asked for.
constexpr int bootPolls = 240;
constexpr int swipeMilliseconds = 220;

QString developerTool(const Platform &platform, const QString &path)
{
    return platform.folders.home + QLatin1Char('/') + platform.profile.developerSdk + path;
}

/// The adb of the folder that a developer's package manager puts programs into, or else that of the SDK.
QString adbPath(const Platform &platform)
{
    const auto installed = QFileInfo(platform.profile.developmentScrcpy).path() + QStringLiteral("/adb");
    return isExecutableFile(installed) ? installed : developerTool(platform, QStringLiteral("/platform-tools/adb"));
}

/// What adb prints; nothing when it can't be started. Blocks.
std::optional<QByteArray> runADB(const Platform &platform, const QStringList &arguments)
{
    ChildCommand command;
    command.program = adbPath(platform);
    command.arguments = QStringList{QStringLiteral("-s"), serial} + arguments;
    auto result = platform.processes->run(command);
    if (result.launchError)
        return std::nullopt;
    return std::move(result.output);
}

bool deviceIsReady(const Platform &platform)
{
    const auto answer
        = runADB(platform, {QStringLiteral("shell"), QStringLiteral("getprop"), QStringLiteral("sys.boot_completed")});
    return answer && answer->trimmed() == "1";
}

/// The device's display without the rows at its top; nothing for bytes that are no picture.
std::optional<QImage> takePicture(const Platform &platform)
{
    auto bytes = runADB(platform, {QStringLiteral("exec-out"), QStringLiteral("screencap"), QStringLiteral("-p")});
    if (!bytes)
        return std::nullopt;
    QBuffer buffer(&*bytes);
    QImageReader reader(&buffer, "png");
    reader.setAutoDetectImageFormat(false);
    const auto image = reader.read();
    const int rows = image.height() - AndroidMirrorModel::deviceTopInset;
    if (rows <= 0)
        return std::nullopt;
    return image.copy(0, AndroidMirrorModel::deviceTopInset, image.width(), rows);
}

/// Where a point of a view lies on the device's display.
QPoint onDevice(QPointF point, QSizeF view)
{
    const auto device = AndroidMirrorModel::deviceSize;
    return {
        static_cast<int>(point.x() / view.width() * device.width()),
        static_cast<int>(point.y() / view.height() * device.height() + AndroidMirrorModel::deviceTopInset)};
}

} // namespace

struct AndroidMirrorModel::Capture {
    bool cancelled = false;
};

AndroidMirrorModel::AndroidMirrorModel(const Platform &platform, std::shared_ptr<QuillnestLog> log)
    : m_platform(platform), m_log(std::move(log))
{
}

AndroidMirrorModel::~AndroidMirrorModel()
{
    if (m_capture)
        m_capture->cancelled = true;
}

void AndroidMirrorModel::setStatus(const QString &status)
{
    m_status = status;
    Q_EMIT changed();
}

void AndroidMirrorModel::start()
{
    if (m_isRunning)
        return;
    m_isRunning = true;
    m_capture = std::make_shared<Capture>();
    setStatus(QStringLiteral("Starting Quillnest Android…"));
    fireAndForget(m_log, run(m_capture));
}

void AndroidMirrorModel::stop()
{
    if (m_capture)
        m_capture->cancelled = true;
    m_capture.reset();
    m_isRunning = false;
    Q_EMIT changed();
}

// The model is gone only when its capture has been cancelled, so that one look suffices after each suspension.
Task<> AndroidMirrorModel::run(std::shared_ptr<Capture> capture)
{
    bool failed = false;
    try {
        auto ensuring = ensureRuntime(capture);
        const bool ready = co_await ensuring;
        if (capture->cancelled)
            co_return;
        if (!ready)
            setStatus(QStringLiteral("Android runtime unavailable"));
    } catch (const LaunchError &error) {
        if (capture->cancelled)
            co_return;
        m_log->write(QStringLiteral("mirror: emulator not started: %1").arg(error.description()));
        failed = true;
    }
    if (failed) {
        m_capture.reset();
        m_isRunning = false;
        setStatus(QStringLiteral("Could not start Quillnest Android"));
        co_return;
    }
    auto capturing = captureFrames(capture);
    co_await capturing;
}

Task<bool> AndroidMirrorModel::ensureRuntime(std::shared_ptr<Capture> capture)
{
    auto ask = [platform = m_platform] { return deviceIsReady(platform); };
    auto asking = background(*m_platform.executor, ask);
    const bool up = co_await asking;
    if (up || capture->cancelled)
        co_return up;

    // One that was started before may still be booting.
    if (!m_emulator || !m_emulator->isRunning()) {
        ChildCommand command;
        command.program = developerTool(m_platform, QStringLiteral("/emulator/emulator"));
        if (!isExecutableFile(command.program))
            co_return false;
        command.arguments
            = {QLatin1Char('@') + m_platform.profile.developerAvdName,
               QStringLiteral("-port"),
               QStringLiteral("5556"),
               QStringLiteral("-no-window"),
               QStringLiteral("-no-audio"),
               QStringLiteral("-no-boot-anim"),
               QStringLiteral("-gpu"),
               QStringLiteral("host"),
               QStringLiteral("-memory"),
               QStringLiteral("2048")};
        command.output = ChildCommand::Output::null;
        m_emulator = m_platform.processes->start(command);
    }
    for (int poll = 0; poll < bootPolls; ++poll) {
        auto pause = sleepFor(*m_platform.clock, bootPollInterval);
        co_await pause;
        if (capture->cancelled)
            co_return false;
        auto askingAgain = background(*m_platform.executor, ask);
        const bool ready = co_await askingAgain;
        if (ready || capture->cancelled)
            co_return ready;
        if (!m_emulator->isRunning())
            co_return false;
    }
    co_return false;
}

Task<> AndroidMirrorModel::captureFrames(std::shared_ptr<Capture> capture)
{
    auto take = [platform = m_platform] { return takePicture(platform); };
    while (true) {
        auto taking = background(*m_platform.executor, take);
        auto picture = co_await taking;
        if (capture->cancelled)
            co_return;
        if (picture) {
            m_frame = std::move(picture);
            setStatus(QStringLiteral("Android connected"));
        } else {
            setStatus(QStringLiteral("Waiting for Android display…"));
        }
        auto pause = sleepFor(*m_platform.clock, frameInterval);
        co_await pause;
        if (capture->cancelled)
            co_return;
    }
}

void AndroidMirrorModel::send(const QStringList &arguments)
{
    const auto whole = QStringList{QStringLiteral("shell"), QStringLiteral("input")} + arguments;
    m_platform.executor->inBackground([platform = m_platform, whole] { runADB(platform, whole); });
}

void AndroidMirrorModel::tap(QPointF point, QSizeF view)
{
    if (view.isEmpty())
        return;
    const auto at = onDevice(point, view);
    send({QStringLiteral("tap"), QString::number(at.x()), QString::number(at.y())});
}

void AndroidMirrorModel::swipe(QPointF from, QPointF to, QSizeF view)
{
    if (view.isEmpty())
        return;
    const auto begin = onDevice(from, view);
    const auto end = onDevice(to, view);
    send(
        {QStringLiteral("swipe"), QString::number(begin.x()), QString::number(begin.y()), QString::number(end.x()),
         QString::number(end.y()), QString::number(swipeMilliseconds)});
}

void AndroidMirrorModel::key(int code)
{
    send({QStringLiteral("keyevent"), QString::number(code)});
}

} // namespace quillnest
