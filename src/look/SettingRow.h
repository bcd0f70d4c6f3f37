#pragma once

#include "look/Control.h"

namespace quillnest
{

/// A setting that is on or off: its words and a switch.
class SettingRow : public Control
{
    Q_OBJECT

public:
    /// How far words and switch stand from the row's ends, in points: room for the ground and the ring.
    static constexpr int inset = 10;

    SettingRow(const Look &look, const QString &words, QWidget *parent = nullptr);

    QSize sizeHint() const override { return {200, heightForWidth(328)}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void paint(QPainter &painter) override;

private:
    void paintSwitch(QPainter &painter, const QRectF &track) const;
};

} // namespace quillnest
