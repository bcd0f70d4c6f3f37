#pragma once

#include "look/Look.h"

#include <QProgressBar>

namespace quillnest
{

/// How far some work has come, as a thin rounded bar.
class ProgressBar : public QProgressBar
{
    Q_OBJECT

public:
    explicit ProgressBar(const Look &look, QWidget *parent = nullptr);

    /// From 0 to 1.
    void setFraction(double fraction);

    QSize sizeHint() const override { return {120, 6}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Look &m_look;
};

} // namespace quillnest
