#pragma once

#include "look/Look.h"

#include <QWidget>

namespace quillnest
{

/// Words with a control beside them: a setting with more than two values, or something that a button is about.
class FieldRow : public QWidget
{
    Q_OBJECT

public:
    /// Takes the control. One without a name gets the words for it.
    FieldRow(const Look &look, const QString &words, QWidget *control, QWidget *parent = nullptr);

    QWidget &control() const { return *m_control; }

    QSize sizeHint() const override { return {200, heightForWidth(328)}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void place();
    int controlWidth(int width) const;
    /// Where the words stand in a row of that size.
    QRect wordsArea(QSize size) const;

    const Look &m_look;
    const QString m_words;
    QWidget *const m_control;
};

} // namespace quillnest
