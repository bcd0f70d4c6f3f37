#pragma once

#include "look/Look.h"

#include <QWidget>

namespace quillnest
{

/// Small words under what they explain, on as many lines as they need.
class Footnote : public QWidget
{
    Q_OBJECT

public:
    enum class Tone {
        quiet,
        /// Something asks to be looked at.
        attention,
    };

    Footnote(const Look &look, const QString &words, Tone tone = Tone::quiet, QWidget *parent = nullptr);

    const QString &words() const { return m_words; }
    void setWords(const QString &words);

    QSize sizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Look &m_look;
    QString m_words;
    const Tone m_tone;
};

} // namespace quillnest
