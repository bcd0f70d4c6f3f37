#pragma once

#include "base/QuillnestLayout.h"

#include <QMenu>

namespace quillnest
{

/// The menu of a window's size button: the present size of its video area, and the sizes that all windows can be given.
class SizeMenu : public QMenu
{
    Q_OBJECT

public:
    explicit SizeMenu(QSize present);

Q_SIGNALS:
    void picked(const quillnest::WindowSizePreset &preset);
};

} // namespace quillnest
