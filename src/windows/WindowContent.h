#pragma once

#include "platform/Platform.h"

#include <QPointer>
#include <QWidget>

#include <vector>

namespace quillnest
{

class AndroidVideoView;
class HeaderView;
class VideoInput;
class WindowCorner;

/// What an app window holds: the header, below it the picture, and what is laid over the picture. It owns where all of
/// that is and what lies above what, the window's round corners included. Main thread.
class WindowContent : public QWidget
{
    Q_OBJECT

public:
    /// Where something is laid over the picture.
    enum class Place {
        /// Over the whole picture, as a shade is.
        coveringPicture,
        /// At the picture's upper edge with a margin on three sides, as high as it wants to be, as a banner is. Above
        /// all that covers the picture.
        belowHeader,
    };

    /// The margins of what stands below the header, in points.
    static constexpr int bannerTop = 8;
    static constexpr int bannerSide = 10;

    WindowContent(const Platform &platform, const QString &title, QWidget *parent = nullptr);

    HeaderView &header() const { return *m_header; }
    AndroidVideoView &videoView() const { return *m_videoView; }
    VideoInput &input() const { return *m_input; }

    /// Takes a widget over and lays it into its place, above what was laid there before. When it is seen is its own
    /// affair: it is hidden at first. It may be deleted at any time.
    void put(QWidget *overlay, Place place);

    /// The size of the picture's area in a content of this size, in points; a window that is hidden has no other way to
    /// know it.
    static QSize pictureSize(QSize content);

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    struct Overlay {
        QPointer<QWidget> widget;
        Place place = Place::coveringPicture;
    };
    QRect pictureArea() const;
    void layOut();
    void layOut(const Overlay &overlay) const;
    void stack();

    HeaderView *m_header = nullptr;
    AndroidVideoView *m_videoView = nullptr;
    VideoInput *m_input = nullptr;
    WindowCorner *m_leftCorner = nullptr;
    WindowCorner *m_rightCorner = nullptr;
    std::vector<Overlay> m_overlays;
};

} // namespace quillnest
