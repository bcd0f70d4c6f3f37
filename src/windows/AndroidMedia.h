#pragma once

#include <QString>

namespace quillnest
{

/// What an app plays, as Android's media session tells it.
struct AndroidMedia {
    QString title;
    QString artist;
    bool playing = false;

    bool operator==(const AndroidMedia &) const = default;
};

/// What a player can be told.
enum class MediaAction { previous, playPause, next };

} // namespace quillnest
