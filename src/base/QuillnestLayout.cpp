#include "base/QuillnestLayout.h"

#include "base/QuillnestSettings.h"

#include <cmath>

namespace quillnest
{

QString WindowSizePreset::label() const
{
    return QStringLiteral("%1 — %2 × %3").arg(QLatin1String(name)).arg(width).arg(height);
}

QSizeF QuillnestLayout::size(const SettingsStore &settings)
{
    // One that is absent resets both, so its own default doesn't count here.
    const auto saved
        = [&settings](const Setting<double> &side) { return QuillnestSettings::number(settings, side.key(), 0); };
    const QSizeF size(saved(BaseSettings::panelWidth), saved(BaseSettings::panelHeight));
    const bool valid = size.width() >= minimumSize.width() && size.height() >= minimumSize.height();
    return valid ? size.boundedTo(largestSize) : QSizeF(defaultSize);
}

QSize QuillnestLayout::launcherSize(const SettingsStore &settings)
{
    return size(settings).toSize().expandedTo(defaultSize);
}

void QuillnestLayout::setSize(SettingsStore &settings, QSizeF size)
{
    BaseSettings::panelWidth.set(settings, std::round(size.width()));
    BaseSettings::panelHeight.set(settings, std::round(size.height()));
}

} // namespace quillnest
