#pragma once

#include "base/LatencyHistogram.h"
#include "platform/Platform.h"
#include "stream/AndroidStreamClient.h"
#include "stream/ScrcpyControl.h"

#include <QUrl>
#include <QWidget>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace quillnest
{

/// What became of the pictures in a view.
struct ViewCounters {
    std::uint64_t framesShown = 0;
    /// Age of the picture when its pixels were last handed to the display, in milliseconds.
    double lastFrameAge = 0;
    /// Of all pictures that were handed to the display as they came.
    LatencyHistogram frameAges;
    /// `Clock::monotonic` when the first picture was handed to the display.
    std::optional<std::chrono::nanoseconds> firstShownAt;
};

/// Shows a stream and turns mouse, wheel and keyboard into control messages. It keeps no state of the stream: without
/// a client, or before the video's size is known, the mouse does nothing.
///
/// "Command" is the key that the desktop's own shortcuts use: Control on Linux, Command on a Mac. The modifier that
/// keeps a key from being typed is the other one: Super on Linux, Control on a Mac.
class AndroidVideoView : public QWidget
{
    Q_OBJECT

public:
    AndroidVideoView(const Platform &platform, QWidget *parent = nullptr);
    ~AndroidVideoView() override;

    /// What the stream feeds and this view paints.
    std::shared_ptr<SampleRenderer> renderer() const { return m_renderer; }

    void setClient(const std::weak_ptr<AndroidStreamClient> &client) { m_client = client; }

    /// Files dropped on the view; without it drops are refused.
    std::function<void(QList<QUrl>)> onFilesDropped;
    /// Asked for in place of sending back.
    std::function<void()> onBackRequest;

    void sendBack();
    void pasteFromMac();

    ViewCounters counters() const { return m_counters; }

    /// Where a point of a view lies in a video that is letterboxed in it, clamped to the video.
    static QPointF videoPoint(QPointF point, QSizeF view, QSizeF video);
    /// Where a picture is drawn in a view, both in pixels: letterboxed, and unscaled when it fits but for the pixels
    /// that the display size was rounded by, since scaling by a hair would blur every line.
    static QRect pictureRect(QSizeF view, QSize picture);
    /// Whether nothing but that rounding is missing.
    static bool fits(QSizeF view, QSize picture);

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;
    bool event(QEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    struct Position {
        QPointF point;
        QSizeF video;
    };
    std::optional<Position> androidPoint(QPointF position) const;
    void sendTouch(ScrcpyControl::MotionAction action, QPointF position);
    void sendKey(std::uint32_t keycode, std::uint32_t meta);
    void sendText(const QString &text);
    void send(const QByteArray &message);
    void requestBack();
    bool handleCommand(const QKeyEvent *event);
    void showNewestFrame();
    void take(const std::shared_ptr<const VideoFrame> &frame);
    void noteFirstShown();
    QSizeF exactSizeInPixels() const;
    QSize sizeInPixels() const;
    /// What of the view a picture changes against the one that is shown, in points.
    QRegion changedArea(const VideoFrame &frame) const;
    void paintFrame(QPainter &painter, const VideoFrame &frame, const QRegion &region);
    void roundCorners(QPainter &painter, const QRegion &region) const;
    void paintEdges(QPainter &painter, const VideoFrame &frame, QRect picture, const QRegion &region);
    bool convertInPlace(QPainter &painter, const VideoFrame &frame, QRect part, QPoint origin);
    static void convertByImage(QPainter &painter, const VideoFrame &frame, QRect part, QRectF target);
    void setDropBorder(bool on);

    const Platform &m_platform;
    const std::shared_ptr<SampleRenderer> m_renderer;
    std::weak_ptr<AndroidStreamClient> m_client;
    std::shared_ptr<const VideoFrame> m_shownFrame;
    ViewCounters m_counters;
    bool m_dropBorder = false;
    /// While an input event is handled, when it came.
    std::optional<std::chrono::nanoseconds> m_inputSince;

    /// Shared with the decoder's thread, which may outlive this view by a call.
    struct FrameSignal {
        std::atomic<bool> posted{false};
        AndroidVideoView *view = nullptr;
    };
    const std::shared_ptr<FrameSignal> m_signal;
};

} // namespace quillnest
