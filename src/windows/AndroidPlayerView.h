#pragma once

#include "look/LiveLook.h"
#include "windows/AndroidMirrorModel.h"
#include "windows/WindowServices.h"

#include <QWidget>

class QLabel;

namespace quillnest
{

class SymbolButton;

/// The simple player: a header with a title, and below it the device's display as `AndroidMirrorModel` sees it. A click
/// is a tap, a drag a swipe. It mirrors while it is shown.
class AndroidPlayerView : public QWidget
{
    Q_OBJECT

public:
    /// `services` outlives the view.
    AndroidPlayerView(const WindowServices &services, const QString &title, QWidget *parent = nullptr);

    AndroidMirrorModel &mirror() { return m_mirror; }
    bool isPinned() const { return m_isPinned; }
    QString title() const;

Q_SIGNALS:
    /// The user wants to go back to the library.
    void closeRequested();

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void togglePin();

    LiveLook m_look;
    AndroidMirrorModel m_mirror;
    QLabel *m_titleLabel = nullptr;
    SymbolButton *m_pinButton = nullptr;
    bool m_isPinned = false;
};

} // namespace quillnest
