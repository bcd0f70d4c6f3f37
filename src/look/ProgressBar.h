#pragma once

#include "platform/Platform.h"

#include <QProgressBar>

namespace quillnest
{

/// How far some work has come, as a thin rounded bar.
class ProgressBar : public QProgressBar
{
    Q_OBJECT

public:
    explicit ProgressBar(const Platform &platform, QWidget *parent = nullptr);

    /// From 0 to 1.
    void setFraction(double fraction);

    QSize sizeHint() const override { return {120, 6}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Platform &m_platform;
};

} // namespace quillnest
