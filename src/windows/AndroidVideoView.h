#pragma once

#include "platform/Platform.h"
#include "windows/ViewCounters.h"

#include <QUrl>
#include <QWidget>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace quillnest
{

/// Paints a stream, and takes files that are dropped on it. What else the user does with it is VideoInput's, where the
/// picture lies in it is PicturePlace's, and what lies over it is WindowContent's. Main thread.
class AndroidVideoView : public QWidget
{
    Q_OBJECT

public:
    AndroidVideoView(const Platform &platform, QWidget *parent = nullptr);
    ~AndroidVideoView() override;

    /// What the stream feeds and this view paints.
    std::shared_ptr<SampleRenderer> renderer() const { return m_renderer; }

    /// Takes the files dropped on the view; without it drops are refused.
    std::function<void(QList<QUrl>)> onFilesDropped;

    /// Gives the keyboard to what comes next in the window.
    void passFocusOn() { QWidget::focusNextPrevChild(true); }

    ViewCounters counters() const { return m_counters; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void showNewestFrame();
    void take(const std::shared_ptr<const VideoFrame> &frame);
    void noteFirstShown();
    QSizeF exactSizeInPixels() const;
    QSize sizeInPixels() const;
    /// What of the view a picture changes against the one that is shown, in points.
    QRegion changedArea(const VideoFrame &frame) const;
    void paintFrame(QPainter &painter, const VideoFrame &frame, const QRegion &region);
    void paintEdges(QPainter &painter, const VideoFrame &frame, QRect picture, const QRegion &region);
    bool convertInPlace(QPainter &painter, const VideoFrame &frame, QRect part, QPoint origin);
    static void convertByImage(QPainter &painter, const VideoFrame &frame, QRect part, QRectF target);
    void setDropBorder(bool on);

    const Platform &m_platform;
    const std::shared_ptr<SampleRenderer> m_renderer;
    std::shared_ptr<const VideoFrame> m_shownFrame;
    ViewCounters m_counters;
    bool m_dropBorder = false;

    /// Shared with the decoder's thread, which may outlive this view by a call.
    struct FrameSignal {
        std::atomic<bool> posted{false};
        AndroidVideoView *view = nullptr;
    };
    const std::shared_ptr<FrameSignal> m_signal;
};

} // namespace quillnest
