#pragma once

#include "launcher/PanelLook.h"
#include "look/HeaderIconButton.h"

#include <QWidget>

class QLineEdit;

namespace quillnest
{

/// The search: a symbol, the text, and a button that empties it while there is some.
class SearchField : public QWidget
{
    Q_OBJECT

public:
    explicit SearchField(const PanelLook &look, QWidget *parent = nullptr);

    QString text() const;
    /// Does nothing if the text stands there already.
    void setText(const QString &text);
    QLineEdit &edit() { return *m_edit; }
    /// Goes on with what was typed elsewhere.
    void take(const QString &typed);
    /// The look has changed.
    void refresh();

    QSize sizeHint() const override { return {200, heightOf(m_look.style)}; }

Q_SIGNALS:
    void edited(const QString &text);
    void accepted();
    /// The keyboard wants to go down to what was found.
    void leftDownwards();

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    static int heightOf(ThemeStyle style);

    const PanelLook &m_look;
    QLineEdit *m_edit = nullptr;
    HeaderIconButton *m_clear = nullptr;
};

} // namespace quillnest
