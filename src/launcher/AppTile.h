#pragma once

#include "base/MobileApp.h"
#include "platform/Platform.h"

#include <QAbstractButton>

namespace quillnest
{

/// One app in the panel: its initial in a coloured square, its name below.
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
    QSize sizeHint() const override { return {84, 100}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    const Platform &m_platform;
    const QString m_name;
    const QColor m_color;
    Marks m_marks;
    bool m_hovered = false;
};

} // namespace quillnest
