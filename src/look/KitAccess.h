#pragma once

class QString;

namespace quillnest
{

class PopUpPicker;

/// Makes known to screen readers what those of the kit's controls are that the toolkit knows nothing like: pickers,
/// segmented controls, cards and footnotes.
void installKitAccess();

/// Tells them that a picker shows another value.
void tellKitValue(PopUpPicker &picker, const QString &value);

} // namespace quillnest
