#pragma once

#include "look/Look.h"

#include <QAbstractButton>

namespace quillnest
{

/// A setting that is on or off: its words and a switch.
class SettingRow : public QAbstractButton
{
    Q_OBJECT

public:
    SettingRow(const Look &look, const QString &words, QWidget *parent = nullptr);

    QSize sizeHint() const override { return {200, heightForWidth(328)}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    const Look &m_look;
    const QString m_words;
};

} // namespace quillnest
