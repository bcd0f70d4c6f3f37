#pragma once

#include "look/Look.h"

#include <QAbstractButton>

#include <functional>

namespace quillnest
{

/// One of several looks to choose from: a sample above its name.
class ChoiceButton : public QAbstractButton
{
    Q_OBJECT

public:
    using Sample = std::function<void(QPainter &painter, const QRectF &area)>;

    ChoiceButton(const Look &look, const QString &name, Sample sample, QWidget *parent = nullptr);

    void setName(const QString &name);
    QSize sizeHint() const override { return {76, 76}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    const Look &m_look;
    QString m_name;
    const Sample m_sample;
};

} // namespace quillnest
