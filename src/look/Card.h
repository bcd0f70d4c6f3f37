#pragma once

#include "look/Look.h"

#include <QWidget>

class QVBoxLayout;

namespace quillnest
{

/// A rounded surface with a title, if it has one, and its content below.
class Card : public QWidget
{
    Q_OBJECT

public:
    /// In points.
    struct Form {
        double radius = 12;
        int padding = 14;
        int spacing = 4;
        /// How much further in than the content the title stands, for rows that have room of their own around them.
        int titleInset = 0;
    };

    Card(const Look &look, const QString &title, QWidget *parent = nullptr);
    Card(const Look &look, const QString &title, const Form &form, QWidget *parent);

    /// A symbol in front of the title.
    void setSymbol(const QString &symbol);
    /// What lies on the surface, from top to bottom.
    QVBoxLayout &content() { return *m_content; }
    /// Where the content begins when there is a title, from the top, in points.
    int titleHeight() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Look &m_look;
    const QString m_title;
    const Form m_form;
    QString m_symbol;
    QVBoxLayout *m_content = nullptr;
};

} // namespace quillnest
