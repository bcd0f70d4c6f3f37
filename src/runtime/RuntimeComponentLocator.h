#pragma once

#include "platform/Platform.h"
#include "runtime/AndroidBridgeComponents.h"

#include <optional>

namespace quillnest
{

/// Decides which set of bridge components is in force and verifies the bundled one before any of it is used.
/// Main thread.
class RuntimeComponentLocator
{
public:
    explicit RuntimeComponentLocator(const Platform &platform);

    /// The components; throws AndroidBridgeError. A bundled set is verified once and remembered; a failed
    /// verification is repeated by the next call, and there is no fall-back once a bundle is present.
    AndroidBridgeComponents androidBridge();

    /// Whether a bundled set is present at all, whole or not.
    bool hasBundledBridge() const;

private:
    AndroidBridgeComponents verifiedBundledBridge() const;
    AndroidBridgeComponents developmentBridge() const;
    QString contents(const QString &path) const;

    const Platform m_platform;
    std::optional<AndroidBridgeComponents> m_verifiedBundle;
};

} // namespace quillnest
