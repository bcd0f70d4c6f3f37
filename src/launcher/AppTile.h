#pragma once

#include "base/MobileApp.h"
#include "platform/Platform.h"

#include <QAbstractButton>
#include <QImage>
#include <QPixmap>

namespace quillnest
{

/// One app in the panel: its icon, or its initial in a coloured square as long as there is none, and its name below.
class AppTile : public QAbstractButton
{
    Q_OBJECT

public:
    struct Marks {
        bool isLaunching = false;
        bool isRunning = false;
    };

    AppTile(const Platform &platform, const MobileApp &app, QWidget *parent = nullptr);

    void setMarks(Marks marks);
    /// The app's icon; a null one means that there is none.
    void setImage(const QImage &image);
    QSize sizeHint() const override { return {84, 100}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    /// The icon with its corners cut, in the pixels of a display with that many to a point.
    const QPixmap &roundedIcon(double pixelRatio);

    const Platform &m_platform;
    const QString m_name;
    const QColor m_color;
    Marks m_marks;
    QImage m_image;
    QPixmap m_icon;
    bool m_hovered = false;
};

} // namespace quillnest
