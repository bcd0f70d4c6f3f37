#include "windows/SizeMenu.h"

#include <cmath>

namespace quillnest
{

SizeMenu::SizeMenu(QSize present)
{
    addAction(QStringLiteral("%1 × %2 | Android").arg(present.width()).arg(present.height()))->setEnabled(false);
    addSeparator();
    for (const auto &preset : QuillnestLayout::presets) {
        auto *item = addAction(preset.label());
        item->setCheckable(true);
        item->setChecked(
            std::abs(present.width() - preset.width) < 2.0 && std::abs(present.height() - preset.height) < 2.0);
        connect(item, &QAction::triggered, this, [this, &preset] { Q_EMIT picked(preset); });
    }
    addSeparator();
    addAction(QStringLiteral("Custom: drag a window corner"))->setEnabled(false);
}

} // namespace quillnest
