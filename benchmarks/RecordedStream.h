#pragma once

#include "driver/ProgramUnderTest.h"
#include "platform/VideoSample.h"

#include <QByteArray>
#include <QSize>

#include <vector>

namespace quillnest::bench
{

/// A stretch of an app's live stream, as the program's own reader takes it off the socket.
class RecordedStream
{
public:
    /// Records `frames` pictures of an app on a display of `size` pixels. The device must be up and the app installed.
    static RecordedStream record(driver::ProgramUnderTest &program, const QString &package, QSize size, int frames);

    const std::vector<VideoSample> &samples() const { return m_samples; }

    /// The stream with start codes, as other players take it.
    QByteArray annexB() const;

    /// Milliseconds of processor time for each picture when FFmpeg decodes the stream on one thread and shows nothing:
    /// the least of three passes
    /// through the library in a loop.
    double decodingFloor() const;

private:
    std::vector<VideoSample> m_samples;
};

} // namespace quillnest::bench
