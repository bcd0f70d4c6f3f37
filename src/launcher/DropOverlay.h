#pragma once

#include "launcher/PanelLook.h"

#include <QWidget>

namespace quillnest
{

/// What lies over the panel while files are held over it.
class DropOverlay : public QWidget
{
    Q_OBJECT

public:
    DropOverlay(const PanelLook &look, QWidget *parent);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const PanelLook &m_look;
};

} // namespace quillnest
