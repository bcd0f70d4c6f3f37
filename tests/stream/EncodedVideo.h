#pragma once

#include <QByteArray>

#include <vector>

namespace quillnest
{

/// A short H.264 stream as a device sends it: the parameter sets in front, then one access unit for each picture.
struct EncodedVideo {
    struct Unit {
        QByteArray bytes;
        bool keyFrame = false;
    };
    QByteArray parameterSets;
    std::vector<Unit> units;
};

/// `count` pictures of one bright red, with a key frame first and then none.
EncodedVideo encodeRed(int width, int height, int count);

} // namespace quillnest
