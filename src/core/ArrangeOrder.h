#pragma once

#include "platform/Platform.h"

#include <QSizeF>
#include <QStringList>

#include <functional>
#include <optional>

namespace quillnest
{

/// The order to put another program's windows into a size, which a start may be given in place of all else: it touches
/// nothing of ours, so it may run beside the program. Main thread.
struct ArrangeOrder {
    QString bundleIdentifier;
    /// In points.
    QSizeF size;

    /// Absent if the arguments hold none, or one that names no program.
    static std::optional<ArrangeOrder> from(const QStringList &arguments);

    /// Carries it out in a moment, says on standard output or standard error what came of it, and calls `quit`: at
    /// once, or when the desktop has had time to ask its user for the permission.
    void carryOut(const Platform &platform, std::function<void()> quit) const;
};

} // namespace quillnest
