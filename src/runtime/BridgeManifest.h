#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace quillnest
{

/// The manifest of the bundled bridge: a JSON object with the optional text "bridgeVersion" and the list "components"
/// of objects with the texts "path", relative to the bundle's "Contents", and "sha256", in hexadecimal.
struct BridgeManifest {
    struct Component {
        QString path;
        QString sha256;
    };

    std::optional<QString> bridgeVersion;
    std::vector<Component> components;

    /// Throws AndroidBridgeError with what is wrong with the text.
    static BridgeManifest parse(const QByteArray &json);
};

} // namespace quillnest
