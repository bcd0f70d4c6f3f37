#include "base/QuillnestLayout.h"

#include "base/QuillnestSettings.h"

#include <cmath>

namespace quillnest
{

namespace
{
const auto widthKey = QStringLiteral("Quillnest.panelWidth");
const auto heightKey = QStringLiteral("Quillnest.panelHeight");
} // namespace

QString WindowSizePreset::label() const
{
    return QStringLiteral("%1 — %2 × %3").arg(QLatin1String(name)).arg(width).arg(height);
}

QSizeF QuillnestLayout::size(const SettingsStore &settings)
{
    const QSizeF saved(
        QuillnestSettings::number(settings, widthKey, 0), QuillnestSettings::number(settings, heightKey, 0));
    const bool valid = saved.width() >= minimumSize.width() && saved.height() >= minimumSize.height();
    return valid ? saved : QSizeF(defaultSize);
}

void QuillnestLayout::setSize(SettingsStore &settings, QSizeF size)
{
    settings.setValue(widthKey, std::round(size.width()));
    settings.setValue(heightKey, std::round(size.height()));
}

} // namespace quillnest
