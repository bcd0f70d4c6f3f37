#pragma once

#include "platform/Platform.h"

#include <QColor>
#include <QImage>

#include <array>
#include <functional>
#include <vector>

namespace quillnest
{

/// What lies behind the panel: one of a few gradients or the user's photo. Main thread.
struct Wallpaper {
    QString id;
    QString name;
    std::array<QColor, 3> colors;

    /// In the order in which they are offered.
    static const std::vector<Wallpaper> &presets();
    static const Wallpaper *preset(const QString &id);

    static QString customId() { return QStringLiteral("custom"); }

    /// The id in the settings; "none" unless there is one.
    static QString selected(const Platform &platform);
    /// Whether the settings ask for a wallpaper that is there. Of a photo the beginning is read.
    static bool isSet(const Platform &platform);

    /// Where the user's photo is kept, as JPEG data.
    static QString customFile(const Folders &folders);
    /// The picture of an id; null for all but a photo that is there.
    static QImage image(const Platform &platform, const QString &id);

    /// Asks for a photo and keeps it. `done` learns on the main thread whether that has come about; what failed isn't
    /// told.
    static void chooseCustom(const Platform &platform, std::function<void(bool)> done);
    /// Reads a picture and writes it as the photo, in one step for whoever reads it. Blocks. Any thread.
    static bool keepPhoto(const QString &picture, const QString &file);
};

} // namespace quillnest
