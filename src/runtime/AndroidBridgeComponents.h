#pragma once

#include <QString>

#include <optional>

namespace quillnest
{

/// Where the files of the display stream lie. Absolute paths.
struct AndroidBridgeComponents {
    enum class Source { bundled, development };

    /// The client of the external-window mode.
    std::optional<QString> scrcpy;
    /// The file that is pushed to the device.
    QString server;
    /// Icons for the client's own windows.
    std::optional<QString> iconDirectory;
    Source source = Source::bundled;
    std::optional<QString> version;

    bool operator==(const AndroidBridgeComponents &) const = default;
};

} // namespace quillnest
