#pragma once

#include "launcher/PanelLook.h"

#include <QDateTime>
#include <QWidget>

#include <memory>

namespace quillnest
{

/// The two lines at the panel's top, as the style has them. Follows the time while it can be seen.
class GreetingHeader : public QWidget
{
    Q_OBJECT

public:
    GreetingHeader(const Platform &platform, const PanelLook &look, QWidget *parent = nullptr);

    /// What one says at that hour.
    static QString greeting(QTime time);

    struct Line {
        QString text;
        QFont font;
        bool quiet = false;
    };
    struct Lines {
        Line first;
        Line second;
    };
    static Lines lines(ThemeStyle style, const QDateTime &time, const QLocale &locale = QLocale());

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QDateTime now() const { return m_platform.clock->wallTime().toLocalTime(); }
    void tick();
    void waitForNextMinute();

    const Platform &m_platform;
    const PanelLook &m_look;
    std::unique_ptr<Timer> m_timer;
};

} // namespace quillnest
