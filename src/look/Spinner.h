#pragma once

#include "look/Look.h"

#include <QWidget>

#include <memory>

namespace quillnest
{

/// A ring that turns while it can be seen: work of unknown length.
class Spinner : public QWidget
{
    Q_OBJECT

public:
    /// `size` in points. The colour is the secondary label's unless another is given.
    explicit Spinner(const Look &look, int size = 16, QWidget *parent = nullptr);

    void setColor(const QColor &color);
    QSize sizeHint() const override { return size(); }

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    const Look &m_look;
    QColor m_color;
    std::unique_ptr<Timer> m_timer;
};

} // namespace quillnest
