#include "core/ArrangeOrder.h"

#include "core/LaunchArguments.h"
#include "ios/ExternalWindowManager.h"

#include <algorithm>
#include <cstdio>

namespace quillnest
{

namespace
{
using namespace std::chrono_literals;

constexpr auto delay = 400ms;
constexpr std::chrono::milliseconds permissionPatience = 15s;
constexpr QSizeF defaultSize(430, 760);

void arrange(const ArrangeOrder &order, const Platform &platform, const std::function<void()> &quit)
{
    const auto &[id, size] = order;
    try {
        ExternalWindowManager::arrange(platform, id, size);
        std::printf(
            "Quillnest arranged %s to %dx%d\n", qUtf8Printable(id), static_cast<int>(size.width()),
            static_cast<int>(size.height()));
        std::fflush(stdout);
    } catch (const ExternalWindowError &error) {
        std::fprintf(stderr, "Quillnest arrange failed: %s\n", error.what());
        // The desktop may be asking its user just now.
        if (error.kind() == ExternalWindowError::Kind::permissionRequired) {
            platform.clock->later(permissionPatience, quit);
            return;
        }
    }
    quit();
}
} // namespace

std::optional<ArrangeOrder> ArrangeOrder::from(const QStringList &arguments)
{
    const auto id = LaunchArguments::value(QStringLiteral("--arrange"), arguments);
    if (!id)
        return std::nullopt;
    const auto number = [&arguments](const char *name, double standard) {
        // No screen is larger, and the number becomes a whole one.
        constexpr double largest = 1e6;
        const auto given = LaunchArguments::numericArgument(QLatin1String(name), arguments).value_or(standard);
        return std::clamp(given, -largest, largest);
    };
    return ArrangeOrder{*id, {number("--width", defaultSize.width()), number("--height", defaultSize.height())}};
}

void ArrangeOrder::carryOut(const Platform &platform, std::function<void()> quit) const
{
    platform.clock->later(delay, [order = *this, platform, quit = std::move(quit)] { arrange(order, platform, quit); });
}

} // namespace quillnest
