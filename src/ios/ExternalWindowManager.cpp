#include "ios/ExternalWindowManager.h"

#include <algorithm>

namespace quillnest::ExternalWindowManager
{

namespace
{
constexpr QSizeF smallest(320, 520);
constexpr int distanceFromEdge = 24;
constexpr QRect frameWithoutScreen(0, 0, 1440, 900);
} // namespace

void arrange(const Platform &platform, const QString &bundleIdentifier, QSizeF size)
{
    using Kind = ExternalWindowError::Kind;
    auto &windows = *platform.foreignWindows;
    const auto error = [&platform](Kind kind) { return ExternalWindowError(kind, platform.profile.systemName); };
    if (!windows.isTrusted()) {
        windows.askForTrust();
        throw error(Kind::permissionRequired);
    }
    if (!windows.isRunning(bundleIdentifier))
        throw error(Kind::appNotRunning);
    const auto all = windows.windows(bundleIdentifier);
    if (all.empty())
        throw error(Kind::windowNotFound);
    const auto window = all.front();

    const auto screen = platform.screens->main();
    const QRectF frame = screen ? screen->visibleFrame : frameWithoutScreen;
    const QSizeF wanted = size.expandedTo(smallest).boundedTo(frame.size());
    const QPointF position(
        frame.right() - wanted.width() - distanceFromEdge,
        frame.top() + std::max(0.0, (frame.height() - wanted.height()) / 2));
    if (!windows.setSize(window, wanted.toSize()) || !windows.setPosition(window, position.toPoint()))
        throw error(Kind::operationFailed);
    windows.activate(window);
}

} // namespace quillnest::ExternalWindowManager
