#pragma once

#include "look/LiveLook.h"
#include "runtime/RuntimePlan.h"

#include <QPointer>
#include <QWidget>

class QFrame;
class QLabel;
class QTextBrowser;

namespace quillnest
{

/// Google's licences over the panel that asks for consent, which they cover until the user decides. Deletes itself
/// when it closes.
class LicenceSheet : public QWidget
{
    Q_OBJECT

public:
    /// Lies over all of `panel` and takes the keyboard.
    LicenceSheet(const Platform &platform, const std::vector<RuntimeLicense> &licenses, QWidget *panel);

Q_SIGNALS:
    void accepted();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void end();
    void takeColors();

    LiveLook m_look;
    QWidget *const m_card;
    QLabel *m_title = nullptr;
    QLabel *m_note = nullptr;
    QFrame *m_ground = nullptr;
    QTextBrowser *m_text = nullptr;
    /// May go while the sheet is open.
    QPointer<QWidget> m_previousFocus;
};

} // namespace quillnest
