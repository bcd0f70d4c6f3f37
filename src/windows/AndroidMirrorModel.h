#pragma once

#include "base/QuillnestLog.h"
#include "platform/Platform.h"
#include "platform/Tasks.h"

#include <QImage>
#include <QObject>
#include <QPointF>
#include <QSizeF>

#include <memory>
#include <optional>

namespace quillnest
{

/// Android as a series of screenshots, with taps, swipes and keys sent by its own "input" command. It needs nothing on
/// the device and knows no sound, no clipboard and no display of an app's own. It uses a developer's tools, never the
/// managed ones. Main thread; child processes and pictures are dealt with in the background.
class AndroidMirrorModel : public QObject
{
    Q_OBJECT

public:
    /// The part of the device's display that a view's points are scaled to, in pixels, and the rows above it, which
    /// are cut off every picture.
    static constexpr QSizeF deviceSize{1080, 2154};
    static constexpr int deviceTopInset = 96;
    /// The code of Android's back key.
    static constexpr int backKey = 4;

    AndroidMirrorModel(const Platform &platform, std::shared_ptr<QuillnestLog> log);
    ~AndroidMirrorModel() override;

    /// The latest picture; stays when no other follows.
    const std::optional<QImage> &frame() const { return m_frame; }
    QString status() const { return m_status; }
    bool isRunning() const { return m_isRunning; }

    /// Starts a developer's emulator unless a device is up, and takes picture after picture until `stop`. Does nothing
    /// while it runs already. An emulator that was started stays.
    void start();
    void stop();

    /// Points of a view of the given size that shows the whole picture.
    void tap(QPointF point, QSizeF view);
    void swipe(QPointF from, QPointF to, QSizeF view);
    void key(int code);

Q_SIGNALS:
    /// The picture, the status or whether it runs.
    void changed();

private:
    /// One run from `start` to `stop`.
    struct Capture;

    Task<> run(std::shared_ptr<Capture> capture);
    /// Whether a device is up, or came up; throws LaunchError when the emulator can't be started.
    Task<bool> ensureRuntime(std::shared_ptr<Capture> capture);
    Task<> captureFrames(std::shared_ptr<Capture> capture);
    void send(const QStringList &arguments);
    void setStatus(const QString &status);

    const Platform m_platform;
    const std::shared_ptr<QuillnestLog> m_log;
    std::optional<QImage> m_frame;
    QString m_status = QStringLiteral("Connecting to Android…");
    bool m_isRunning = false;
    std::shared_ptr<Capture> m_capture;
    std::shared_ptr<RunningChild> m_emulator;
};

} // namespace quillnest
