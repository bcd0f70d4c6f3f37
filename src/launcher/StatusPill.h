#pragma once

#include "core/AppLibraryStore.h"
#include "launcher/PanelLook.h"

#include <QWidget>

namespace quillnest
{

/// What Android is doing, in one word.
class StatusPill : public QWidget
{
    Q_OBJECT

public:
    using State = AppLibraryStore::AndroidState;

    explicit StatusPill(const PanelLook &look, QWidget *parent = nullptr);

    void setState(State state);
    State state() const { return m_state; }
    QSize sizeHint() const override;

    static QString word(State state);
    static QColor color(State state);
    static QString help(State state);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const PanelLook &m_look;
    State m_state = State::sleeping;
};

} // namespace quillnest
