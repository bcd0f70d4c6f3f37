#pragma once

#include "launcher/PanelLook.h"

#include <QWidget>

class QLabel;

namespace quillnest
{

/// What stands in place of the apps as long as there are none.
class EmptyState : public QWidget
{
    Q_OBJECT

public:
    explicit EmptyState(const PanelLook &look, QWidget *parent = nullptr);

    /// The look has changed.
    void refresh();

Q_SIGNALS:
    void chooseRequested();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const PanelLook &m_look;
    QLabel *m_heading = nullptr;
    QLabel *m_text = nullptr;
};

} // namespace quillnest
