#pragma once

#include "look/Control.h"

#include <functional>

namespace quillnest
{

/// One of several looks to choose from: a sample above its name.
class ChoiceButton : public Control
{
    Q_OBJECT

public:
    using Sample = std::function<void(QPainter &painter, const QRectF &area)>;

    ChoiceButton(const Look &look, const QString &name, Sample sample, QWidget *parent = nullptr);

    QSize sizeHint() const override { return {76, 76}; }

protected:
    void paint(QPainter &painter) override;

private:
    void paintTick(QPainter &painter, QPointF center) const;

    const Sample m_sample;
};

} // namespace quillnest
