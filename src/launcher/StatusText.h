#pragma once

#include "launcher/PanelLook.h"
#include "look/ElidedLabel.h"
#include "platform/Pasteboard.h"

namespace quillnest
{

/// The line in the panel's footer that tells how the last thing went. What doesn't fit is in its tool tip, and all of
/// it can be copied, with the keyboard as well.
class StatusText : public ElidedLabel
{
    Q_OBJECT

public:
    /// Left of the words, for the ring.
    static constexpr int inset = 4;

    StatusText(const PanelLook &look, Pasteboard &pasteboard, QWidget *parent);

    /// Shown as they are, whatever they hold.
    void setWords(const QString &words);

protected:
    void paintEvent(QPaintEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void copy();

    const PanelLook &m_look;
    Pasteboard &m_pasteboard;
};

} // namespace quillnest
